#ifndef APPS_MICRO800_CONTROLLER_DOCTOR_DOCTOR_H
#define APPS_MICRO800_CONTROLLER_DOCTOR_DOCTOR_H

#include <QJsonObject>
#include <QString>
#include <functional>

#include "apps/micro800/base/connection.h"
#include "apps/micro800/controller/controller_session.h"
#include "apps/micro800/controller/doctor/troubleshooting.h"
#include "apps/micro800/format/address.h"

/// One rung of the ladder and what came of it.
struct DoctorStep {
    enum class Result { kGood, kBad, kSkipped };

    QString name;  ///< "TCP"
    Result result = Result::kGood;
    QString text;         ///< what was found, or the error as a panel shows it
    Advice advice;        ///< for kBad: what the troubleshooting page says of the text
    QJsonObject figures;  ///< of the reads
};

struct DoctorPlan {
    Connection connection;
    TagAddress tag;  ///< without a type: one of the controller's own list
    int reads = 100;
};

/// The receivers of the results while the doctor works. Both may be empty.
struct DoctorSinks {
    std::function<void(const DoctorStep&)> step;
    std::function<void(int done)> reads;  ///< of the last step
};

/// Climbs from the host's name to a hundred reads and stops at the first rung that breaks: name,
/// route, TCP, identity, session, Forward Open, a tag, the reads. One object, one climb.
class Doctor {
 public:
    Doctor(const DoctorPlan& wanted, const TraceSink& trace, const DoctorSinks& told);

    /// Whether no rung broke.
    bool run();

 private:
    bool good(const char* name, const QString& text);
    bool bad(const char* name, const QString& text);
    bool skip(const char* name, const QString& text);

    bool checkName();
    bool checkRoute();
    bool checkTcp();
    bool checkIdentity();
    bool checkSession();
    bool checkForwardOpen();
    bool findTag();
    bool checkTag();
    bool checkReads();
    bool reopen();

    const DoctorPlan plan;
    const DoctorSinks sinks;
    ControllerSession session;
    TagAddress tag;
    QString address;  ///< of the host
};

#endif
