#include "apps/micro800/identity_query.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <QByteArray>
#include <QElapsedTimer>
#include <memory>

#include "apps/micro800/problem.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session.h"
#include "eip/cip_tcp_callback.h"
#include "eip/socket_tools.h"

namespace {

QString endpointText(const Connection& connection) {
    return QStringLiteral("%1 port %2").arg(connection.host).arg(connection.port);
}

/// The host's first IPv4 address as text, which the transport takes without another look-up.
/// The transport itself does not tell an unknown host from one that is out of reach.
bool lookUp(const QString& host, QByteArray* address, QString* problem) {
    in_addr found;
    const int failure = KLookUpHost(host.toLatin1().constData(), &found);
    if (failure != 0) {
        return fail(problem, QStringLiteral("host %1 is unknown: %2; check the name, or give the "
                                            "controller's IP address")
                                 .arg(host, QString::fromLocal8Bit(gai_strerror(failure))));
    }
    char text[INET_ADDRSTRLEN];
    *address = inet_ntop(AF_INET, &found, text, sizeof text);
    return true;
}

/// Why there is no reply, or none of use, from the error record of the client.
QString replyProblem(const Connection& connection, qint64 waitedMs) {
    const QString error = QLatin1String(cip_err_msg());
    QString what;
    if (cip_err_type() == CIP_ERR_EIP) {
        const char* meaning = CIPGetErrMsg(cip_err_type(), cip_errno(), cip_ext_errno());
        what = QStringLiteral("refuses to identify itself: %1 (%2);")
                   .arg(error, QLatin1String(meaning));
    } else if (cip_errno() != CIP_INTERNAL_TIMEOUT) {
        what = QStringLiteral("answers, but not with an identity: %1;").arg(error);
    } else if (waitedMs < connection.timeoutMs) {
        what = QStringLiteral("broke off its answer; try again, and");
    } else {
        what = QStringLiteral(
                   "takes the connection but gives no whole answer within %1 ms; allow more time "
                   "with --timeout, and")
                   .arg(connection.timeoutMs);
    }
    return QStringLiteral("%1 %2 check that the port is the controller's EtherNet/IP port")
        .arg(endpointText(connection), what);
}

}  // namespace

bool queryIdentity(const Connection& connection, CipIdentity* identity, QString* problem) {
    QByteArray address;
    if (!lookUp(connection.host, &address, problem))
        return false;
    CipTcpCallback transport;
    const auto timeoutMs = static_cast<unsigned long>(connection.timeoutMs);
    if (!transport.connect(address.constData(), connection.port, timeoutMs)) {
        return fail(problem,
                    QStringLiteral("nothing answers at %1: %2; check address, port and cable, and "
                                   "that the controller has power")
                        .arg(endpointText(connection), transport.lastError()));
    }
    const std::unique_ptr<_Eip_Session, void (*)(_Eip_Session*)> session(
        NewSession(timeoutMs, &transport), DeleteSession);
    QElapsedTimer clock;
    clock.start();
    const cip::MallocPtr<_Encap_Header> reply(_ListIdentity(session.get()));
    if (reply && DecodeIdentity(reply.get(), identity))
        return true;
    return fail(problem, replyProblem(connection, clock.elapsed()));
}
