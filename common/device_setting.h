#ifndef COMMON_DEVICE_SETTING_H
#define COMMON_DEVICE_SETTING_H

#include <QList>
#include <QPair>
#include <QString>

class QDataStream;

/// Kind of a communication port, a 32-bit number in memory and on the stream. The numbers belong
/// to the runtime; a record keeps every number that it is given.
enum device_type : qint32 {
    kDeviceTypeSerial = 32,  ///< the serial port of the default setting
};

/// One communication port of the runtime: a serial line or a list of TCP endpoints.
///
/// A plain value record, cheap to copy (strings and list are implicitly shared). The order of the
/// fields and the stream format are shared with the runtime. No operation fails or throws. Used
/// on the runtime's calling thread only.
struct DeviceSetting {
    typedef QPair<QString, unsigned short> SocketData;  ///< IP address and TCP port

    DeviceSetting(device_type type, const QString& name, int baudrate, int databits, int stopbits,
                  int parity, int extraValue, const QString& extraText);
    /// The same with extraValue 0 and an empty extraText.
    DeviceSetting(device_type type, const QString& name, int baudrate, int databits, int stopbits,
                  int parity);

    /// The IP address of entry `index`, of entry currentIPIndex for -1; empty outside the list.
    QString socketIP(int index = -1) const;
    /// The TCP port of entry `index`, of entry currentIPIndex for -1; 0 outside the list.
    unsigned short port(int index = -1) const;

    /// Replaces the address of an entry that the list already contains; -1 is the entry
    /// currentIPIndex. Ignored for every index outside the list.
    void setSocketIP(const QString& ip, int index = -1);
    /// Replaces the port of an entry that the list already contains, chosen the same way.
    void setPort(unsigned short port, int index = -1);

    /// Replaces the list by pairs of address and decimal port; a text that is not a number in
    /// 0..65535 gives port 0. currentIPIndex stays, also when it now lies outside the list.
    void setSocketData(const QList<QPair<QString, QString> >& data);

    /// Takes `index` when the list contains that entry, else does nothing.
    void setCurrentIPIndex(int index);

    /// Prints the record as one line to the debug output.
    void dump() const;

    device_type type;
    QString name;  ///< "COM2", "ETHERNET1"
    qint32 baudrate;
    qint32 databits;
    qint32 stopbits;    ///< the runtime's code
    qint32 parity;      ///< the runtime's code
    qint32 extraValue;  ///< kept and streamed for the runtime
    QString extraText;  ///< kept for the runtime, not streamed
    qint32 linkID;      ///< the runtime's link number, -1 while it has none
    qint32 currentIPIndex;
    QList<SocketData> socketList;

 private:
    int entryAt(int index) const;
    int writableEntryAt(int index) const;
};

/// Writes type, name, baudrate, databits, stopbits, parity, extraValue, linkID, currentIPIndex
/// (32-bit ints, the name as a QString), a 32-bit count and that many pairs of QString and 16-bit
/// port. Byte order and string form follow the stream's own settings.
QDataStream& operator<<(QDataStream& out, const DeviceSetting& setting);

/// Reads what the operator above writes. The index is tested against the list that the record
/// contained before, as the runtime does it: a freshly built record keeps index 0. A short stream
/// leaves zeros and empty strings. The stream's status shows it.
QDataStream& operator>>(QDataStream& in, DeviceSetting& setting);

#endif
