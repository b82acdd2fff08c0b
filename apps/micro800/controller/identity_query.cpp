#include "apps/micro800/controller/identity_query.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <memory>

#include "apps/micro800/base/host_lookup.h"
#include "apps/micro800/base/problem.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session.h"

namespace {

QString endpointText(const Connection& connection) {
    return QStringLiteral("%1 port %2").arg(connection.host).arg(connection.port);
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

bool queryIdentity(const Connection& connection, const TraceSink& trace, CipIdentity* identity,
                   QString* problem) {
    QString address;
    if (!lookUpHost(connection.host, &address, problem)) {
        return false;
    }
    TracedTransport transport(trace);
    const auto timeoutMs = static_cast<unsigned long>(connection.timeoutMs);
    if (!transport.connect(address.toLatin1().constData(), connection.port, timeoutMs)) {
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
    if (reply && DecodeIdentity(reply.get(), identity)) {
        return true;
    }
    return fail(problem, replyProblem(connection, clock.elapsed()));
}
