#include "apps/micro800/controller/doctor/doctor.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "apps/micro800/base/host_lookup.h"
#include "apps/micro800/controller/check/tag_check.h"
#include "apps/micro800/controller/doctor/read_figures.h"
#include "apps/micro800/controller/identity_facts.h"
#include "apps/micro800/controller/symbol_list.h"

namespace {

const char kMicro800Name[] = "2080-";

// Status word (CIP Networks Library Vol. 1, table 5-2.3) and state (table 5-2.2).
const unsigned kMajorFaults = 0x0C00;
const int kStateRecoverableFault = 4;
const int kStateUnrecoverableFault = 5;

/// After so many reads without an answer it is clear enough.
const int kMostLost = 3;

/// The system's text as the transport gives it: "Network is unreachable(101)".
QString systemText(int number) {
    return QStringLiteral("%1(%2)").arg(QString::fromLocal8Bit(strerror(number))).arg(number);
}

/// The address that this computer would send from; empty with errno when there is no way. Nothing
/// is sent.
QString ownAddressTowards(const QString& address, unsigned short port) {
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    inet_pton(AF_INET, address.toLatin1().constData(), &to.sin_addr);
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    const bool known = fd >= 0 && connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0 &&
                       getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size) == 0;
    const int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    errno = error;
    char text[INET_ADDRSTRLEN];
    return known ? QLatin1String(inet_ntop(AF_INET, &own.sin_addr, text, sizeof text)) : QString();
}

bool hasMajorFault(const CipIdentity& identity) {
    return (identity.status & kMajorFaults) != 0 || identity.state == kStateRecoverableFault ||
           identity.state == kStateUnrecoverableFault;
}

QString identityText(const CipIdentity& identity) {
    const QString status = statusText(identity.status);
    return QStringLiteral("%1, firmware %2, serial %3, %4, status 0x%5%6")
        .arg(productText(identity), revisionText(identity), serialText(identity),
             stateText(identity.state),
             QStringLiteral("%1").arg(identity.status, 4, 16, QLatin1Char('0')).toUpper(),
             status.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(status));
}

}  // namespace

Doctor::Doctor(const DoctorPlan& wanted, const TraceSink& trace, const DoctorSinks& told)
    : plan(wanted), sinks(told), session(wanted.connection, trace), tag(wanted.tag) {}

bool Doctor::run() {
    const bool reached = checkName() && checkRoute() && checkTcp() && checkIdentity() &&
                         checkSession() && checkForwardOpen() && findTag() && checkTag() &&
                         checkReads();
    session.close();
    return reached;
}

bool Doctor::good(const char* name, const QString& text) {
    sinks.step({QLatin1String(name), DoctorStep::Result::kGood, text, {}, {}});
    return true;
}

bool Doctor::bad(const char* name, const QString& text) {
    sinks.step({QLatin1String(name),
                DoctorStep::Result::kBad,
                text,
                troubleshooting().adviceFor(text),
                {}});
    return false;
}

bool Doctor::skip(const char* name, const QString& text) {
    sinks.step({QLatin1String(name), DoctorStep::Result::kSkipped, text, {}, {}});
    return true;
}

bool Doctor::checkName() {
    QString problem;
    if (!lookUpHost(plan.connection.host, &address, &problem)) {
        return bad("name", problem.section(QLatin1Char(';'), 0, 0));
    }
    return good("name", address == plan.connection.host
                            ? QStringLiteral("%1 is an address").arg(address)
                            : QStringLiteral("%1 is %2").arg(plan.connection.host, address));
}

bool Doctor::checkRoute() {
    const QString own = ownAddressTowards(address, plan.connection.port);
    return own.isEmpty() ? bad("route", systemText(errno))
                         : good("route", QStringLiteral("from this computer's %1").arg(own));
}

bool Doctor::checkTcp() {
    return session.connect(address)
               ? good("TCP",
                      QStringLiteral("port %1 takes the connection").arg(plan.connection.port))
               : bad("TCP", session.error());
}

bool Doctor::checkIdentity() {
    CipIdentity identity;
    if (!session.identify(&identity)) {
        return bad("identity", session.error());
    }
    const QString text = identityText(identity);
    if (!QByteArray(identity.productName).startsWith(kMicro800Name)) {
        return bad("identity", QStringLiteral("not a Micro800: %1").arg(text));
    }
    return hasMajorFault(identity) ? bad("identity", QStringLiteral("major fault: %1").arg(text))
                                   : good("identity", text);
}

bool Doctor::checkSession() {
    return session.registerSession() ? good("session", QStringLiteral("registered"))
                                     : bad("session", session.error());
}

bool Doctor::checkForwardOpen() {
    return session.openConnection() ? good("Forward Open", QStringLiteral("connection opened"))
                                    : bad("Forward Open", session.error());
}

/// Takes the first variable of the controller's list when none was named.
bool Doctor::findTag() {
    if (tag.type) {
        return true;
    }
    QVector<Symbol> symbols;
    QString problem;
    const ObjectRequester request = [this](int service, const QByteArray& path,
                                           const QByteArray& data) {
        return session.object(service, path, data);
    };
    listSymbols(request, &symbols, &problem);
    for (const Symbol& symbol : symbols) {
        if (symbol.dimensions.isEmpty() && !symbol.isSystem() &&
            parseTagAddress(symbol.address(), &tag, &problem)) {
            return true;
        }
    }
    return true;
}

bool Doctor::checkTag() {
    if (!tag.type) {
        return skip("tag", QStringLiteral("none named, and the controller lists none; give an "
                                          "address to have it read"));
    }
    QString error;
    const TagChecker checker(
        [this, &error](const QByteArray& name, int) {
            const TagReply reply = session.read(name);
            error = error.isEmpty() ? reply.error : error;  // the first says it
            return reply;
        },
        {});
    ListedAddress listed;
    listed.text = tag.text;
    listed.first = tag;
    const TagCheck result = checker.check(listed);
    if (result.verdict == Verdict::kOk) {
        return good("tag", QStringLiteral("%1 is read, a %2").arg(tag.text, result.controllerType));
    }
    return bad("tag", error.isEmpty()
                          ? QStringLiteral("%1: %2").arg(verdictText(result.verdict), result.detail)
                          : error);
}

bool Doctor::reopen() {
    session.close();
    return session.connect(address) && session.registerSession() && session.openConnection();
}

bool Doctor::checkReads() {
    if (!tag.type) {
        return skip("reads", QStringLiteral("no tag to read"));
    }
    ReadFigures figures;
    bool open = true;
    for (int i = 0; open && i < plan.reads && figures.lost() < kMostLost; ++i) {
        const TagReply reply = session.read(tag.name.toUpper().toLatin1());
        if (reply.kind == TagReply::Kind::kValue) {
            figures.add(reply.microseconds / 1000);
        } else {
            figures.addLost();
            open = reopen();
        }
        if (sinks.reads) {
            sinks.reads(i + 1);
        }
    }
    const bool allGood = figures.lost() == 0;
    const QString text = allGood ? figures.text()
                                 : QStringLiteral("%1 of %2 reads had no answer")
                                       .arg(figures.lost())
                                       .arg(figures.lost() + figures.good());
    sinks.step({QStringLiteral("reads"),
                allGood ? DoctorStep::Result::kGood : DoctorStep::Result::kBad, text,
                allGood ? Advice() : troubleshooting().adviceFor(text), figures.json()});
    return allGood;
}
