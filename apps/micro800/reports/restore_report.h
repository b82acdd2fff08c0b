#ifndef APPS_MICRO800_REPORTS_RESTORE_REPORT_H
#define APPS_MICRO800_REPORTS_RESTORE_REPORT_H

#include <QJsonObject>
#include <QString>

#include "apps/micro800/setpoints/restorer.h"
#include "apps/micro800/setpoints/value_file.h"
#include "apps/micro800/terminal/console.h"

// The messages of restore.

/// How a restore came to its end.
enum class RestoreEnd {
    kStoppedBefore,  ///< by the user, before anything was written
    kCompared,       ///< nothing was to be written
    kDeclined,       ///< the user did not want it
    kWritten,        ///< every difference was written, or tried
    kStopped,        ///< in the middle
};

struct RestoreReport {
    QString fileName;
    ValueFile file;
    QJsonObject controller;  ///< the one that was asked
    RestoreEnd end = RestoreEnd::kCompared;
};

/// When and where the file was saved, and whether this is the same controller.
void printOrigin(const RestoreReport& report, Console& console);
/// A line for each difference, and a count.
void printDifferences(const Restorer& restorer, const ValueFile& file, Console& console);
/// All of it as one object.
void printJson(const Restorer& restorer, const RestoreReport& report, Console& console);
/// What went wrong, to the error stream, and (unless `json`) what was done. True when all is as it
/// was asked for.
bool printEnd(const Restorer& restorer, const RestoreReport& report, bool json, Console& console);

#endif
