#ifndef APPS_SIMULATOR_PROFILES_H
#define APPS_SIMULATOR_PROFILES_H

#include <QString>

#include "apps/simulator/objects/controller.h"

namespace sim {

/// Sets what controllers of one generation of firmware are reported to do differently from others;
/// the README says where that is reported. False when there is no profile of this name.
bool applyProfile(const QString& name, ControllerSettings* settings);

/// "early, older, newer".
QString profileNames();

}  // namespace sim

#endif
