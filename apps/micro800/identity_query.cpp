#include "apps/micro800/identity_query.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <QByteArray>
#include <QElapsedTimer>
#include <cstdlib>
#include <memory>

#include "eip/cip/cip_error.h"
#include "eip/cip/session.h"
#include "eip/cip_tcp_callback.h"

namespace {

struct FreeReply {
    void operator()(_Encap_Header* reply) const { std::free(reply); }
};
struct FreeSession {
    void operator()(_Eip_Session* session) const { DeleteSession(session); }
};

QString endpointText(const Connection& connection) {
    return QStringLiteral("%1 port %2").arg(connection.host).arg(connection.port);
}

/// The host's first IPv4 address as text, which the transport takes without another look-up.
/// The transport itself does not tell an unknown host from one that is out of reach.
bool lookUp(const QString& host, QByteArray* address, QString* problem) {
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(host.toLatin1().constData(), nullptr, &hints, &found);
    if (failure != 0 || !found) {
        *problem = QStringLiteral(
                       "host %1 is unknown: %2; check the name, or give the controller's IP "
                       "address")
                       .arg(host, QString::fromLocal8Bit(gai_strerror(failure)));
        return false;
    }
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &reinterpret_cast<sockaddr_in*>(found->ai_addr)->sin_addr, text,
              sizeof text);
    freeaddrinfo(found);
    *address = text;
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
        *problem = QStringLiteral(
                       "nothing answers at %1: %2; check address, port and cable, and that the "
                       "controller has power")
                       .arg(endpointText(connection), transport.lastError());
        return false;
    }
    const std::unique_ptr<_Eip_Session, FreeSession> session(NewSession(timeoutMs, &transport));
    QElapsedTimer clock;
    clock.start();
    const std::unique_ptr<_Encap_Header, FreeReply> reply(_ListIdentity(session.get()));
    if (reply && DecodeIdentity(reply.get(), identity))
        return true;
    *problem = replyProblem(connection, clock.elapsed());
    return false;
}
