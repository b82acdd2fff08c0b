#ifndef APPS_MICRO800_CONTROLLER_DISCOVERY_DEVICE_LIST_H
#define APPS_MICRO800_CONTROLLER_DISCOVERY_DEVICE_LIST_H

#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include "eip/cip/identity.h"

/// A device that answered, and where it did.
struct FoundDevice {
    CipIdentity identity;
    QStringList endpoints;  ///< "192.168.1.20:44818": sender of the answer, port of its identity
};

/// Devices in the order in which they answered. Vendor, device type, product code and serial number
/// distinguish them; with a serial number of 0 the address does.
class DeviceList {
 public:
    /// Takes an answer; a device that is known gets another address at most.
    void add(const QString& sender, const CipIdentity& identity);

    const QVector<FoundDevice>& devices() const { return found; }

 private:
    QVector<FoundDevice> found;
};

/// One line per device under a heading: address, product, revision, serial number, state, vendor.
QStringList deviceTable(const QVector<FoundDevice>& devices);

/// What --json prints for one device: "addresses" and the facts of its identity.
QJsonObject deviceJson(const FoundDevice& device);

#endif
