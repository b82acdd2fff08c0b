// Who the driver is, what it offers by default, and its error state.

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/border.h"

namespace {

const QString VERSION_STRING = QString::fromLatin1("1.0.0");

const int kAccessSize = 1024;            // bytes
const int kCommunicationFlags = 1 << 8;  // the runtime's meaning

// The port record that the runtime starts from; a network driver changes none of it.
const device_type kDefaultDeviceType = device_type(32);
const char kDefaultDeviceName[] = "COM2";
const int kDefaultBaudrate = 9600;
const int kDefaultDatabits = 8;

const int kDefaultTimeoutMs = 3000;
const int kDefaultRetry = 3;
const char kDefaultPort[] = "44818";  // EtherNet/IP explicit messaging over TCP

}  // namespace

int DriverABMicro800Eth::totalSize() {
    return kAccessSize;
}

bool DriverABMicro800Eth::initialize(AbstractDeviceInterface*) {
    return true;
}

bool DriverABMicro800Eth::validation(const QString&) {
    return false;
}

QString DriverABMicro800Eth::name() {
    return withoutThrowing(QString(), [] { return QString::fromLatin1("Micro800 Ethernet"); });
}

QString DriverABMicro800Eth::vender() {
    return withoutThrowing(QString(), [] { return QString::fromLatin1("Allen Bradley"); });
}

QString DriverABMicro800Eth::getVersionNumber() {
    return VERSION_STRING;
}

DeviceSetting* DriverABMicro800Eth::getDefaultSerialDeviceSetting() {
    return withoutThrowing(static_cast<DeviceSetting*>(0), [] {
        return new DeviceSetting(kDefaultDeviceType, QLatin1String(kDefaultDeviceName),
                                 kDefaultBaudrate, kDefaultDatabits, 0, 0);
    });
}

DriverSetting* DriverABMicro800Eth::getDefaultDriverSetting() {
    return withoutThrowing(static_cast<DriverSetting*>(0), [] {
        return new DriverSetting(kDefaultTimeoutMs, kDefaultRetry, 0, 0);
    });
}

QString DriverABMicro800Eth::getStringBasedDefaultDriverSetting() {
    return withoutThrowing(QString(), [] { return QString::fromLatin1(kDefaultPort); });
}

int DriverABMicro800Eth::supportedCommunicationFlags() {
    return kCommunicationFlags;
}

void DriverABMicro800Eth::setDebugMode(bool on) {
    debugMode = on;
}

int DriverABMicro800Eth::getBlockAccessSize() {
    return kAccessSize;
}

int DriverABMicro800Eth::getBitBlockAccessSize() {
    return kAccessSize;
}

bool DriverABMicro800Eth::hasError() {
    return commError;
}

QString DriverABMicro800Eth::getLastError() {
    return lastError;
}

QObject* DriverABMicro800Eth::getThisObject() {
    return this;
}

bool DriverABMicro800Eth::isSupportSessionCommand() {
    return true;
}

/// The text stays: only the flag shows whether the last access failed.
void DriverABMicro800Eth::clearCommError() {
    commError = false;
}

void DriverABMicro800Eth::setCommError(const QString& text) {
    lastError = text;
    commError = true;
}

/// Names the access before the error text, once.
void DriverABMicro800Eth::prefixCommError(const char* verb, const CommunicatorCommand& command) {
    if (!lastError.contains(QLatin1Char('>'))) {
        lastError =
            QString::fromLatin1("%1 %2> ").arg(QLatin1String(verb), command.address) + lastError;
    }
}

/// The error of an access that ran out of memory; allocates none. Without the access before it when
/// there is still none for it.
void DriverABMicro800Eth::noMemoryFor(const char* verb, const CommunicatorCommand& command) {
    access = nullptr;
    setCommError(noMemory);
    withoutThrowing(false, [&] {
        prefixCommError(verb, command);
        return true;
    });
}
