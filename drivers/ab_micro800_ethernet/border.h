#ifndef DRIVERS_AB_MICRO800_ETHERNET_BORDER_H
#define DRIVERS_AB_MICRO800_ETHERNET_BORDER_H

#include <exception>

/// What `act` returns, or `otherwise` when it throws. Qt and the standard library throw when memory
/// runs out, and nothing may throw over the plugin's border.
template <class Result, class Act>
Result withoutThrowing(const Result& otherwise, const Act& act) {
    try {
        return act();
    } catch (const std::exception&) {
        return otherwise;
    }
}

#endif
