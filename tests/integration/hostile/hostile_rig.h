#ifndef TESTS_INTEGRATION_HOSTILE_HOSTILE_RIG_H
#define TESTS_INTEGRATION_HOSTILE_HOSTILE_RIG_H

#include <QByteArray>
#include <memory>
#include <mutex>

#include "integration/driver_rig.h"
#include "integration/hostile/exchange.h"
#include "integration/hostile/hostile_case.h"
#include "integration/hostile/verdict.h"
#include "integration/scripted_controller.h"
#include "support/lateness_meter.h"

/// The controller of the hostile replies: it has the tags V and OTHER and answers well, but for the
/// one message that it was armed for. All operations may be called while it serves.
class HostileController {
 public:
    explicit HostileController(const Exchange& exchange);
    quint16 port() const { return scripted.port(); }

    /// From now on the next message of the exchange gets this reply.
    void arm(const HostileCase& hostile);
    /// The next tag request gets the answer to the one before it, upon which the driver gives the
    /// connection up.
    void breakConnection();
    bool hasBroken() const;

    /// What an armed reply met; `served` is false while its message has not come.
    struct Met {
        bool served = false;
        int readsSince = 0;  ///< Read Tags of V that came after it
        QByteArray request;
        Outgoing sent;
    };
    Met met() const;

 private:
    ScriptedController::Answer answer(const QByteArray& request);
    bool isArmedFor(const QByteArray& request) const;
    QByteArray goodReply(const QByteArray& request) const;
    QByteArray goodRouterReply(const QByteArray& request) const;
    QByteArray readReply(int service, int elements, int offset) const;

    const Exchange exchange;
    mutable std::mutex mutex;
    std::unique_ptr<HostileCase> armed;  ///< guarded by mutex, like those below
    bool breaks;
    Met last;
    ScriptedController scripted;  ///< last: its thread uses the others
};

/// A driver out of the plugin file and its controller. One thread.
class HostileRig {
 public:
    /// Time-outs of the device, milliseconds: short ones, and those of a second look, when a value
    /// did not arrive in time from a busy machine.
    static const int kShortTimeoutMs = 100;
    static const int kPatientTimeoutMs = 5000;

    explicit HostileRig(const Exchange& exchange);

    /// Plays a case and makes sure that the next good answers are taken. Empty: all as it has to
    /// be; else what was wrong.
    QByteArray play(const HostileCase& hostile);

    /// How long the accesses of the last case took at most, in milliseconds, and whether the reply
    /// was taken for good.
    int longestMs() const { return longest; }
    bool wasTaken() const { return taken; }

 private:
    struct Seen {
        bool isGood;
        QByteArray value;
        QByteArray reason;  ///< without the access before it
        bool isLate;        ///< a time-out, or nothing within the second that the driver waits
    };

    void start(int timeoutMs);
    QByteArray playOnce(const HostileCase& hostile);
    QByteArray playDirect(const HostileCase& hostile);
    QByteArray playPolled(const HostileCase& hostile);
    QByteArray judged(const Seen& seen);
    QByteArray afterwards();
    QByteArray goodAgain(const CommunicatorCommand& command, const QByteArray& value, bool mayFail);
    Seen access(const CommunicatorCommand& command, const QByteArray& toWrite);
    QByteArray goodValue() const;

    const Exchange exchange;
    HostileController controller;
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
    bool wasLate;  ///< something of the last case came to nothing for want of time
    bool taken;
    int longest;
    int longestOver;  ///< by how much one of them outlasted the time-out and the machine's lateness
    int deadline;     ///< of an access, milliseconds
    LatenessMeter machine;
};

#endif
