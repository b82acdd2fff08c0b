#include <QDateTime>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QSaveFile>

#include "apps/micro800/base/problem.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/options/addresses.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/reports/controller_record.h"
#include "apps/micro800/setpoints/element_access.h"
#include "apps/micro800/setpoints/value_file.h"

namespace {

struct SavePlan {
    ConnectionOptions options;
    QVector<ListedAddress> addresses;
    QString file;
    bool keepGoing = false;
    bool json = false;
};

/// What the reads came to.
struct SaveResult {
    ValueFile file;
    int elements = 0;
    QJsonArray failed;
};

bool planSave(const CommandLine& line, SavePlan* plan, QString* problem) {
    plan->file = line.value(QStringLiteral("output"));
    plan->keepGoing = line.isSet(QStringLiteral("keep-going"));
    plan->json = line.isSet(QStringLiteral("json"));
    if (!connectionOptionsFrom(line, &plan->options, problem) ||
        !listedAddressesFrom(line, &plan->addresses, problem)) {
        return false;
    }
    return !plan->file.isEmpty() || fail(problem, QStringLiteral("-o FILE is missing"));
}

void readAll(const SavePlan& plan, DriverSession* session, SaveResult* result, Console& console) {
    for (const ListedAddress& address : plan.addresses) {
        SavedValue value;
        value.address = asRange(address);
        QString problem;
        if (readElements(session, address, 0, address.count(), &value.elements, &problem)) {
            result->elements += value.elements.size();
            result->file.values.append(value);
            continue;
        }
        console.error(problem);
        result->file.unsaved.append(
            {value.address.text, QLatin1String(value.type().name), problem});
        result->failed.append(QJsonObject{{QStringLiteral("address"), address.text},
                                          {QStringLiteral("error"), problem}});
    }
}

bool store(QSaveFile* file, const ValueFile& values, QString* problem) {
    const QByteArray text = valueFileText(values);
    if (file->write(text) != text.size() || !file->commit()) {
        return fail(problem, QStringLiteral("%1: %2").arg(file->fileName(), file->errorString()));
    }
    return true;
}

void tell(const SavePlan& plan, const SaveResult& result, bool stored, double seconds,
          Console& console) {
    if (plan.json) {
        console.json({{QStringLiteral("ok"), stored && result.failed.isEmpty()},
                      {QStringLiteral("file"), stored ? QJsonValue(plan.file) : QJsonValue()},
                      {QStringLiteral("addresses"), result.file.values.size()},
                      {QStringLiteral("values"), result.elements},
                      {QStringLiteral("failed"), result.failed},
                      {QStringLiteral("controller"), result.file.controller}});
        return;
    }
    if (stored) {
        console.line(QStringLiteral("%1: %2 values of %3 addresses from %4 in %5 s")
                         .arg(plan.file, QString::number(result.elements),
                              QString::number(result.file.values.size()),
                              controllerText(result.file.controller),
                              QString::number(seconds, 'f', 1)));
    }
}

int save(const SavePlan& plan, DriverSession* session, Console& console) {
    QSaveFile file(plan.file);
    QString problem;
    if (!file.open(QIODevice::WriteOnly)) {
        console.error(QStringLiteral("micro800: %1: %2").arg(plan.file, file.errorString()));
        return kExitFailed;
    }
    QElapsedTimer clock;
    clock.start();
    SaveResult result;
    result.file.saved = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    result.file.controller = controllerRecord(plan.options.connection, &problem);
    if (!problem.isEmpty()) {
        console.error(
            QStringLiteral("micro800: saved without the controller's identity: %1").arg(problem));
        problem.clear();
    }
    readAll(plan, session, &result, console);
    const bool whole = result.failed.isEmpty();
    const bool worthIt = whole || (plan.keepGoing && !result.file.values.isEmpty());
    const bool stored = worthIt && store(&file, result.file, &problem);
    tell(plan, result, stored, static_cast<double>(clock.elapsed()) / 1000, console);
    if (!worthIt) {
        problem = QStringLiteral("%1 is not written: %2 of %3 addresses could not be read%4")
                      .arg(plan.file, QString::number(result.failed.size()),
                           QString::number(plan.addresses.size()),
                           plan.keepGoing ? QString()
                                          : QStringLiteral("; --keep-going saves the others"));
    }
    if (!stored) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
    }
    return stored && whole ? kExitOk : kExitFailed;
}

}  // namespace

CommandHelp saveHelp() {
    CommandHelp help;
    help.name = QStringLiteral("save");
    help.summary = QStringLiteral("saves the values of tags in a file");
    help.synopsis << QStringLiteral("--host HOST -o FILE [OPTION...] ADDRESS|@FILE...")
                  << QStringLiteral("--host HOST -o FILE --project DIR [OPTION...]");
    help.description
        << QStringLiteral(
               "Reads every address through the plugin and writes a file with addresses, types and "
               "values, the time, and the controller's identity: set points for 'micro800 "
               "restore'. 'micro800-sim --tags FILE' simulates a controller with these values.")
        << QStringLiteral(
               "An address may be a range of an array, DINT0:RECIPE[0..9,0..4]. Without addresses, "
               "saves the arrays that the project declares. Arrays are read one packet at a time; "
               "the controller can change values between packets.")
        << addressFileHelp()
        << QStringLiteral(
               "If an address cannot be read, no file is written, so that nobody takes a part for "
               "the whole; an older file of that name stays.");
    help.options = connectionOptionSpecs(true);
    help.options << OptionSpec{QStringLiteral("output"), QStringLiteral("FILE"),
                               QStringLiteral("The file to write. Required."), QString(),
                               QStringLiteral("o")}
                 << OptionSpec{QStringLiteral("keep-going"), QString(),
                               QStringLiteral("Saves the readable addresses, and the reason for "
                                              "the others; the exit status is still 1."),
                               QString()}
                 << OptionSpec{
                        QStringLiteral("json"), QString(),
                        QStringLiteral("Prints one JSON object: ok, file, addresses, values, "
                                       "failed (address and error) and controller."),
                        QString()};
    help.examples << QStringLiteral(
                         "micro800 save --host 192.168.1.20 -o mixer.json @setpoints.txt\n"
                         "mixer.json: 212 values of 14 addresses from \"2080-LC50-48QWB\" 12.11,\n"
                         "serial number 0x6080C0DE, at 192.168.1.20:44818 in 0.2 s")
                  << QStringLiteral(
                         "micro800 save --host plc -o mixer.json REAL0:SPEED 'DINT0:RECIPE[0..9]'")
                  << QStringLiteral("micro800 save --host plc -o mixer.json --project ./panel");
    return help;
}

int runSave(const CommandLine& line, Console& console) {
    SavePlan plan;
    QString problem;
    if (!planSave(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("save"), problem);
    }
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console)) {
        return kExitFailed;
    }
    return save(plan, &session, console);
}
