#include "apps/micro800/reports/restore_report.h"

#include <QJsonArray>

#include "apps/micro800/reports/controller_record.h"
#include "apps/micro800/setpoints/element_value.h"

namespace {

bool isDone(const Restorer& restorer, const RestoreReport& report) {
    const bool ended = report.end == RestoreEnd::kCompared || report.end == RestoreEnd::kWritten;
    return ended && restorer.unreadable().isEmpty() && restorer.notTaken().isEmpty();
}

const char* endName(RestoreEnd end) {
    switch (end) {
        case RestoreEnd::kStoppedBefore:
        case RestoreEnd::kStopped:
            return "stopped";
        case RestoreEnd::kCompared:
            return "compared";
        case RestoreEnd::kDeclined:
            return "declined";
        case RestoreEnd::kWritten:
            break;
    }
    return "written";
}

QJsonArray shortfallsJson(const QVector<Shortfall>& shortfalls) {
    QJsonArray list;
    for (const Shortfall& shortfall : shortfalls) {
        list.append(QJsonObject{{QStringLiteral("address"), shortfall.address},
                                {QStringLiteral("error"), shortfall.problem}});
    }
    return list;
}

QString restoredText(const Restorer& restorer) {
    return QStringLiteral("%1 of %2 values restored")
        .arg(restorer.restored())
        .arg(restorer.differences().size());
}

void printStop(const Restorer& restorer, Console& console) {
    console.error(
        QStringLiteral("micro800: stopped before %1; %2, the same command writes the rest")
            .arg(restorer.nextAddress(), restoredText(restorer)));
}

}  // namespace

void printOrigin(const RestoreReport& report, Console& console) {
    const ValueFile& file = report.file;
    console.line(
        QStringLiteral("saved %1 from %2; this is %3")
            .arg(file.saved.isEmpty() ? QStringLiteral("at an unknown time") : file.saved,
                 controllerText(file.controller),
                 isSameController(file.controller, report.controller)
                     ? QStringLiteral("the same controller")
                     : QStringLiteral("another: %1").arg(controllerText(report.controller))));
    for (const UnsavedValue& one : file.unsaved) {
        console.error(QStringLiteral("%1 was not saved: %2").arg(one.address, one.problem));
    }
}

void printDifferences(const Restorer& restorer, const ValueFile& file, Console& console) {
    for (const Difference& difference : restorer.differences()) {
        const TagType& type = file.values.at(difference.value).type();
        console.line(QStringLiteral("%1: %2 -> %3")
                         .arg(restorer.addressOf(difference), elementText(type, difference.now),
                              elementText(type, difference.wanted)));
    }
    console.line(QStringLiteral("%1 values are the same, %2 differ")
                     .arg(restorer.same())
                     .arg(restorer.differences().size()));
}

void printJson(const Restorer& restorer, const RestoreReport& report, Console& console) {
    QJsonArray different;
    for (const Difference& difference : restorer.differences()) {
        const TagType& type = report.file.values.at(difference.value).type();
        different.append(
            QJsonObject{{QStringLiteral("address"), restorer.addressOf(difference)},
                        {QStringLiteral("now"), elementJson(type, difference.now)},
                        {QStringLiteral("saved"), elementJson(type, difference.wanted)}});
    }
    console.json(
        {{QStringLiteral("ok"), isDone(restorer, report)},
         {QStringLiteral("end"), QLatin1String(endName(report.end))},
         {QStringLiteral("file"), report.fileName},
         {QStringLiteral("saved"), report.file.saved},
         {QStringLiteral("controller"), report.controller},
         {QStringLiteral("same"), restorer.same()},
         {QStringLiteral("different"), different},
         {QStringLiteral("unreadable"), shortfallsJson(restorer.unreadable())},
         {QStringLiteral("restored"), restorer.restored()},
         {QStringLiteral("not_taken"), shortfallsJson(restorer.notTaken())},
         {QStringLiteral("next"),
          report.end == RestoreEnd::kStopped ? QJsonValue(restorer.nextAddress()) : QJsonValue()}});
}

bool printEnd(const Restorer& restorer, const RestoreReport& report, bool json, Console& console) {
    for (const Shortfall& shortfall : restorer.unreadable()) {
        console.error(
            QStringLiteral("%1 is not compared: %2").arg(shortfall.address, shortfall.problem));
    }
    for (const Shortfall& shortfall : restorer.notTaken()) {
        console.error(
            QStringLiteral("%1 did not take: %2").arg(shortfall.address, shortfall.problem));
    }
    switch (report.end) {
        case RestoreEnd::kStoppedBefore:
            console.error(QStringLiteral("micro800: stopped before anything was written"));
            break;
        case RestoreEnd::kDeclined:
            console.error(QStringLiteral("micro800: nothing is written"));
            break;
        case RestoreEnd::kStopped:
            printStop(restorer, console);
            break;
        case RestoreEnd::kWritten:
            if (!json) {
                console.line(restoredText(restorer));
            }
            break;
        case RestoreEnd::kCompared:
            break;
    }
    return isDone(restorer, report);
}
