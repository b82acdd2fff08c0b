#ifndef APPS_MICRO800_POLLING_POLL_ADVICE_H
#define APPS_MICRO800_POLLING_POLL_ADVICE_H

#include <QString>
#include <QVector>

#include "apps/micro800/polling/poll_plan.h"

/// A part of the list that belongs together, such as all DINT tags or one array.
struct PollPart {
    QString label;  ///< "40 DINT tags", "DINT0:RECIPE[0..9,0..4]"
    PollCost cost;
};

/// Where the pass goes, the largest part first.
QVector<PollPart> partsOf(const PollPlan& plan);

/// Something that makes the pass shorter.
struct PollAdvice {
    QString text;     ///< what to do
    PollCost before;  ///< of the entries that it is about
    PollCost after;   ///< of what takes their place

    double gainMs(double readMs) const { return before.ms(readMs) - after.ms(readMs); }
};

/// What would help, the largest gain first; nothing that gains nothing. All of it can be done
/// together.
QVector<PollAdvice> adviceFor(const PollPlan& plan, double readMs);

/// The cost of the whole list after all of that.
PollCost costAfter(const PollPlan& plan, const QVector<PollAdvice>& advice);

#endif
