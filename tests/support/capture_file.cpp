#include "support/capture_file.h"

#include <QFile>
#include <QtEndian>

namespace {

const quint32 kSectionHeader = 0x0A0D0D0A;
const quint32 kInterface = 1;
const quint32 kPacket = 6;
const quint16 kControllerPort = 44818;

quint32 u32(const QByteArray& bytes, int at) {
    return qFromLittleEndian<quint32>(reinterpret_cast<const uchar*>(bytes.constData() + at));
}

quint16 u16(const QByteArray& bytes, int at) {
    return qFromLittleEndian<quint16>(reinterpret_cast<const uchar*>(bytes.constData() + at));
}

quint32 net32(const QByteArray& bytes, int at) {
    return qFromBigEndian<quint32>(reinterpret_cast<const uchar*>(bytes.constData() + at));
}

quint16 net16(const QByteArray& bytes, int at) {
    return qFromBigEndian<quint16>(reinterpret_cast<const uchar*>(bytes.constData() + at));
}

int padded(int size) {
    return (size + 3) / 4 * 4;
}

/// The text of an option, from the options that begin at `at` and end with the block.
QString option(const QByteArray& block, int at, int code) {
    while (at + 4 <= block.size() - 4) {
        const int size = u16(block, at + 2);
        if (u16(block, at) == 0 || at + 4 + size > block.size() - 4) {
            break;
        }
        if (u16(block, at) == code) {
            return QString::fromUtf8(block.mid(at + 4, size));
        }
        at += 4 + padded(size);
    }
    return QString();
}

/// 0xFFFF for bytes whose checksum is right (RFC 1071).
int sumOf(QByteArray bytes) {
    if (bytes.size() % 2 != 0) {
        bytes.append('\0');
    }
    quint32 sum = 0;
    for (int i = 0; i < bytes.size(); i += 2) {
        sum += net16(bytes, i);
    }
    while (sum >> 16 != 0) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return int(sum);
}

bool takeApart(const QByteArray& ip, CapturedPacket* packet) {
    if (ip.size() < 28 || ip.at(0) != 0x45 || net16(ip, 2) != ip.size()) {
        return false;
    }
    packet->protocol = ip.at(9);
    packet->from = net32(ip, 12);
    packet->to = net32(ip, 16);
    packet->fromPort = net16(ip, 20);
    packet->toPort = net16(ip, 22);
    const char length[] = {0, char(packet->protocol), char((ip.size() - 20) >> 8),
                           char(ip.size() - 20)};
    packet->checksumsHold =
        sumOf(ip.left(20)) == 0xFFFF &&
        sumOf(ip.mid(12, 8) + QByteArray(length, sizeof length) + ip.mid(20)) == 0xFFFF;
    if (packet->protocol != 6) {
        packet->payload = ip.mid(28);
        return true;
    }
    if (ip.size() < 40) {
        return false;
    }
    packet->sequence = net32(ip, 24);
    packet->acknowledged = net32(ip, 28);
    packet->flags = ip.at(33);
    packet->payload = ip.mid(40);
    return true;
}

QByteArray payloads(const QList<CapturedPacket>& packets, bool toController) {
    QByteArray bytes;
    for (const CapturedPacket& packet : packets) {
        const quint16 port = toController ? packet.toPort : packet.fromPort;
        if (packet.protocol == 6 && port == kControllerPort) {
            bytes += packet.payload;
        }
    }
    return bytes;
}

}  // namespace

bool CaptureFile::parse(const QByteArray& bytes, QString* problem) {
    int at = 0;
    while (at < bytes.size()) {
        const int left = bytes.size() - at;
        const quint32 size = left >= 12 ? u32(bytes, at + 4) : 0;
        if (size < 12 || size % 4 != 0 || qint64(size) > left ||
            u32(bytes, at + int(size) - 4) != size) {
            *problem = QString("no whole block at %1").arg(at);
            return false;
        }
        const QByteArray block = bytes.mid(at, int(size));
        const quint32 type = u32(block, 0);
        if (at == 0 && (type != kSectionHeader || u32(block, 8) != 0x1A2B3C4D)) {
            *problem = "no section header";
            return false;
        }
        if (type == kSectionHeader) {
            comment = option(block, 24, 1);
            application = option(block, 24, 4);
        } else if (type == kInterface && u16(block, 8) != 101) {
            *problem = "another link type";
            return false;
        } else if (type == kPacket) {
            CapturedPacket packet;
            const int length = int(u32(block, 20));
            packet.micros = qint64(quint64(u32(block, 12)) << 32 | u32(block, 16));
            packet.comment = option(block, 28 + padded(length), 1);
            if (!takeApart(block.mid(28, length), &packet)) {
                *problem = QString("no packet of IP in the block at %1").arg(at);
                return false;
            }
            packets << packet;
        }
        at += int(size);
    }
    return !bytes.isEmpty();
}

bool CaptureFile::read(const QString& path, QString* problem) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *problem = file.errorString();
        return false;
    }
    return parse(file.readAll(), problem);
}

QStringList CaptureFile::comments() const {
    QStringList texts;
    for (const CapturedPacket& packet : packets) {
        if (!packet.comment.isEmpty()) {
            texts << packet.comment;
        }
    }
    return texts;
}

QByteArray CaptureFile::bytesToController() const {
    return payloads(packets, true);
}

QByteArray CaptureFile::bytesFromController() const {
    return payloads(packets, false);
}

QByteArray CaptureFile::lastRequest(int command) const {
    const QByteArray bytes = bytesToController();
    QByteArray last;
    int at = 0;
    while (at + 24 <= bytes.size()) {
        const int size = 24 + u16(bytes, at + 2);
        if (u16(bytes, at) == command) {
            last = bytes.mid(at, size);
        }
        at += size;
    }
    return last;
}
