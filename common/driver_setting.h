#ifndef COMMON_DRIVER_SETTING_H
#define COMMON_DRIVER_SETTING_H

#include <QString>

class QDataStream;

/// How a driver talks to its devices.
///
/// A plain value record; the order of the fields and the stream format are shared with the
/// runtime. No operation fails or throws. Used on the runtime's calling thread only.
struct DriverSetting {
    DriverSetting(int timeout, int retry, int stationid, int delay);
    /// Equal to the form above: the text and the number are not kept.
    DriverSetting(int timeout, int retry, int stationid, int delay, const QString&, unsigned short);
    /// Keeps the second text as extraText and the flag as extraFlag; the first text and the
    /// number are not kept.
    DriverSetting(int timeout, int retry, int stationid, int delay, const QString&, unsigned short,
                  const QString& text, bool flag);

    /// Takes every field of `other` but extraFlag, which stays this record's own.
    void copy(const DriverSetting& other);

    /// Prints the four numbers as one line to the debug output.
    void dump() const;

    qint32 timeout;  ///< time-out for an answer, ms
    qint32 retry;
    qint32 stationid;
    qint32 delay;       ///< between two requests
    QString extraText;  ///< kept for the runtime, not streamed
    bool extraFlag;     ///< kept for the runtime, neither streamed nor copied by copy()
};

/// Writes timeout, retry, stationid and delay as 32-bit ints: 16 bytes.
QDataStream& operator<<(QDataStream& out, const DriverSetting& setting);

/// Reads the same four numbers and leaves the other fields alone. A short stream leaves zeros.
QDataStream& operator>>(QDataStream& in, DriverSetting& setting);

#endif
