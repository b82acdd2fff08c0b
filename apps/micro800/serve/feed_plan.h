#ifndef APPS_MICRO800_SERVE_FEED_PLAN_H
#define APPS_MICRO800_SERVE_FEED_PLAN_H

#include <QVector>

#include "apps/micro800/format/address_list.h"

/// How many of the addresses, in their order, each driver gets, so that the list of each is no
/// longer than a driver takes (polling/poll_plan.h). `declared` are the arrays of the project.
QVector<int> spreadOverDrivers(const QVector<TagAddress>& addresses,
                               const QVector<ListedAddress>& declared);

#endif
