#ifndef APPS_MICRO800_REPORTS_PLAN_REPORT_H
#define APPS_MICRO800_REPORTS_PLAN_REPORT_H

#include <QString>

#include "apps/micro800/polling/poll_plan.h"
#include "apps/micro800/terminal/console.h"

/// How long a read takes, and how that is known.
struct ReadTime {
    double ms = 0;
    QString source;  ///< "median of 20 reads through the plugin"
};

/// Prints what a pass costs, where it goes and what would help; as text or as one JSON object.
/// `addresses` is the number that the list was made of.
void printPlan(const PollPlan& plan, int addresses, const ReadTime& read, bool json,
               Console& console);

#endif
