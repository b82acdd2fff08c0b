#include "common/device_setting.h"

#include <QDataStream>
#include <QDebug>
#include <QIODevice>

namespace {

/// The shortest pair on the stream: the length word of an empty string and the port.
const qint64 kMinStreamedPair = 4 + 2;

/// How many of `count` announced pairs the bytes at hand can contain. A sequential device does not
/// know what is still to come: nothing is reserved for it.
int pairsToReserve(const QDataStream& in, quint32 count) {
    const QIODevice* device = in.device();
    if (device == nullptr || device->isSequential()) {
        return 0;
    }
    const qint64 possible = device->bytesAvailable() / kMinStreamedPair;
    return static_cast<int>(qMin<qint64>(qMin<qint64>(count, possible), 0x7FFFFFFF));
}

void writeSocketList(QDataStream& out, const QList<DeviceSetting::SocketData>& list) {
    out << static_cast<quint32>(list.size());
    for (int i = 0; i < list.size(); ++i) {
        out << list.at(i).first << static_cast<quint16>(list.at(i).second);
    }
}

/// Ends early, after the pair that met the end of the stream: what the runtime's own reading of
/// such a list leaves. The status is asked too, since a failing device need not be at its end.
QList<DeviceSetting::SocketData> readSocketList(QDataStream& in) {
    QList<DeviceSetting::SocketData> list;
    quint32 count = 0;
    in >> count;
    list.reserve(pairsToReserve(in, count));
    for (quint32 i = 0; i < count; ++i) {
        QString ip;
        quint16 port = 0;
        in >> ip >> port;
        list.append(DeviceSetting::SocketData(ip, port));
        if (in.atEnd() || in.status() == QDataStream::ReadPastEnd) {
            break;
        }
    }
    return list;
}

}  // namespace

DeviceSetting::DeviceSetting(device_type type, const QString& name, int baudrate, int databits,
                             int stopbits, int parity, int extraValue, const QString& extraText)
    : type(type),
      name(name),
      baudrate(baudrate),
      databits(databits),
      stopbits(stopbits),
      parity(parity),
      extraValue(extraValue),
      extraText(extraText),
      linkID(-1),
      currentIPIndex(0) {}

DeviceSetting::DeviceSetting(device_type type, const QString& name, int baudrate, int databits,
                             int stopbits, int parity)
    : DeviceSetting(type, name, baudrate, databits, stopbits, parity, 0, QString()) {}

int DeviceSetting::entryAt(int index) const {
    return index == -1 ? currentIPIndex : index;
}

/// The entry to change, or -1 when the list does not contain it.
int DeviceSetting::writableEntryAt(int index) const {
    const int entry = entryAt(index);
    return entry >= 0 && entry < socketList.size() ? entry : -1;
}

QString DeviceSetting::socketIP(int index) const {
    return socketList.value(entryAt(index)).first;
}

unsigned short DeviceSetting::port(int index) const {
    // value() makes a default pair outside the list; Qt sets its number to 0.
    return socketList.value(entryAt(index)).second;
}

void DeviceSetting::setSocketIP(const QString& ip, int index) {
    const int entry = writableEntryAt(index);
    if (entry >= 0) {
        socketList[entry].first = ip;
    }
}

void DeviceSetting::setPort(unsigned short port, int index) {
    const int entry = writableEntryAt(index);
    if (entry >= 0) {
        socketList[entry].second = port;
    }
}

void DeviceSetting::setSocketData(const QList<QPair<QString, QString> >& data) {
    QList<SocketData> list;
    list.reserve(data.size());
    for (int i = 0; i < data.size(); ++i) {
        list.append(SocketData(data.at(i).first, data.at(i).second.toUShort(0, 10)));
    }
    socketList = list;
}

void DeviceSetting::setCurrentIPIndex(int index) {
    if (index >= 0 && index < socketList.size()) {
        currentIPIndex = index;
    }
}

void DeviceSetting::dump() const {
    qDebug() << "type:" << static_cast<qint32>(type) << "string:" << name << "baudrate:" << baudrate
             << "databits:" << databits << "stopbits:" << stopbits << "parity:" << parity
             << "linkID:" << linkID << "current ip:" << socketIP() << "current port:" << port();
}

QDataStream& operator<<(QDataStream& out, const DeviceSetting& setting) {
    out << static_cast<qint32>(setting.type) << setting.name << setting.baudrate << setting.databits
        << setting.stopbits << setting.parity << setting.extraValue << setting.linkID
        << setting.currentIPIndex;
    writeSocketList(out, setting.socketList);
    return out;
}

QDataStream& operator>>(QDataStream& in, DeviceSetting& setting) {
    qint32 type = 0;
    qint32 index = 0;
    in >> type >> setting.name >> setting.baudrate >> setting.databits >> setting.stopbits >>
        setting.parity >> setting.extraValue >> setting.linkID >> index;
    setting.type = static_cast<device_type>(type);
    setting.setCurrentIPIndex(index);
    setting.socketList = readSocketList(in);
    return in;
}
