#ifndef APPS_SIMULATOR_OBJECTS_IDENTITY_H
#define APPS_SIMULATOR_OBJECTS_IDENTITY_H

#include <string>

#include "apps/simulator/wire/bytes.h"

namespace sim {

/// The identity object of the controller (CIP Networks Library Vol. 1, 5-2).
struct Identity {
    uint16_t vendor = 1;         // Rockwell Automation/Allen-Bradley
    uint16_t deviceType = 0x0E;  // programmable logic controller
    uint16_t productCode = 186;
    uint8_t majorRevision = 12;
    uint8_t minorRevision = 11;
    uint16_t status = 0x0034;  // configured, no I/O connection
    uint32_t serial = 0x6080C0DE;
    std::string productName = "2080-LC50-48QWB";
    uint8_t state = 3;  // operational
};

/// Appends the identity item of a ListIdentity reply (Vol. 2, 2-4.4.3). `address` is the IPv4
/// address in host order.
void putIdentityItem(Bytes& out, const Identity& identity, uint32_t address, uint16_t port);

/// Appends the communications item of a ListServices reply (Vol. 2, 2-4.6.3).
void putServicesItem(Bytes& out);

}  // namespace sim

#endif
