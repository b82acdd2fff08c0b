#include "apps/micro800/recording/capture.h"

#include <QFile>
#include <QHash>
#include <QStringList>
#include <QtEndian>
#include <algorithm>

namespace {

const quint32 kSectionHeader = 0x0A0D0D0A;
const quint32 kPacketBlock = 6;
const quint32 kByteOrderMagic = 0x1A2B3C4D;
const int kBlockHead = 4 + 4;
const int kSmallestBlock = kBlockHead + 4;
const int kSectionOptions = kBlockHead + 4 + 4 + 8;
const int kPacketData = kBlockHead + 4 + 8 + 4 + 4;
const int kCapturedAt = kBlockHead + 4 + 8;
const int kTimeAt = kBlockHead + 4;
const int kOptionHead = 2 + 2;
const quint16 kCommentOption = 1;

/// The end of the year 9999: later times are no dates, and their distances no numbers.
const quint64 kLastMicros = 253402300799999999;

const int kIpHeader = 20;
const int kTcpHeader = 20;
const int kProtocolAt = 9;
const char kTcp = 6;
const quint16 kControllerPort = 44818;

const int kEncapHeader = 24;
const qint64 kLargestFile = 64 * 1024 * 1024;

template <typename T>
T little(const QByteArray& bytes, int at) {
    return qFromLittleEndian<T>(bytes.constData() + at);
}

quint16 big16(const QByteArray& bytes, int at) {
    return qFromBigEndian<quint16>(bytes.constData() + at);
}

int padded(int size) {
    return size + (4 - size % 4) % 4;
}

/// The text of a block's comment, from the options that begin at `at`.
QString commentOf(const QByteArray& block, int at) {
    const int end = block.size() - 4;
    while (end - at >= kOptionHead) {
        const quint16 code = little<quint16>(block, at);
        const int size = little<quint16>(block, at + 2);
        if (code == 0 || size > end - at - kOptionHead) {
            break;
        }
        if (code == kCommentOption) {
            return QString::fromUtf8(block.mid(at + kOptionHead, size));
        }
        at += kOptionHead + padded(size);
    }
    return QString();
}

/// Puts the bytes of one direction of one connection together to messages.
class Stream {
 public:
    void add(qint64 micros, CaptureEntry::Kind kind, const QByteArray& data,
             QVector<CaptureEntry>* entries) {
        pending += data;
        while (pending.size() >= kEncapHeader) {
            const int size = kEncapHeader + little<quint16>(pending, 2);
            if (size > pending.size()) {
                break;
            }
            entries->append({micros, kind, QString(), pending.left(size)});
            pending.remove(0, size);
        }
        lastMicros = micros;
        lastKind = kind;
    }

    /// What is left was never whole.
    void finish(QVector<CaptureEntry>* entries) const {
        if (!pending.isEmpty()) {
            entries->append({lastMicros, lastKind, QString(), pending});
        }
    }

 private:
    QByteArray pending;
    qint64 lastMicros = 0;
    CaptureEntry::Kind lastKind = CaptureEntry::kReply;
};

class Parser {
 public:
    explicit Parser(Capture* result) : capture(result) {}

    void takeSection(const QByteArray& block) {
        for (const QString& line : commentOf(block, kSectionOptions).split('\n')) {
            if (line.startsWith(QLatin1String("why: "))) {
                capture->why = line.mid(5);
            } else if (line.startsWith(QLatin1String("detail: "))) {
                capture->detail = line.mid(8);
            }
        }
    }

    bool takePacket(const QByteArray& block) {
        if (block.size() < kPacketData + 4) {
            return false;
        }
        const quint32 captured = little<quint32>(block, kCapturedAt);
        if (captured > quint32(block.size() - kPacketData - 4)) {
            return false;
        }
        const quint64 time =
            quint64(little<quint32>(block, kTimeAt)) << 32 | little<quint32>(block, kTimeAt + 4);
        const qint64 micros = qint64(std::min(time, kLastMicros));
        const int size = int(captured);
        const QString comment = commentOf(block, kPacketData + padded(size));
        if (!comment.isEmpty()) {
            capture->entries.append({micros, CaptureEntry::kEvent, comment, QByteArray()});
        }
        takeSegment(micros, block.mid(kPacketData, size));
        return true;
    }

    void finish() {
        for (const Stream& stream : streams) {
            stream.finish(&capture->entries);
        }
        std::stable_sort(
            capture->entries.begin(), capture->entries.end(),
            [](const CaptureEntry& a, const CaptureEntry& b) { return a.micros < b.micros; });
    }

 private:
    void takeSegment(qint64 micros, const QByteArray& packet) {
        if (packet.size() <= kIpHeader + kTcpHeader || packet.at(kProtocolAt) != kTcp) {
            return;
        }
        const quint16 from = big16(packet, kIpHeader);
        const quint16 to = big16(packet, kIpHeader + 2);
        const bool request = to == kControllerPort;
        const quint32 key = quint32(request ? from : to) << 1 | quint32(request);
        streams[key].add(micros, request ? CaptureEntry::kRequest : CaptureEntry::kReply,
                         packet.mid(kIpHeader + kTcpHeader), &capture->entries);
    }

    Capture* capture;
    QHash<quint32, Stream> streams;
};

}  // namespace

bool parseCapture(const QByteArray& bytes, Capture* capture, QString* problem) {
    *capture = Capture();
    if (bytes.size() < kSectionOptions || little<quint32>(bytes, 0) != kSectionHeader ||
        little<quint32>(bytes, kBlockHead) != kByteOrderMagic) {
        *problem = QStringLiteral("it is not a recording");
        return false;
    }
    Parser parser(capture);
    int at = 0;
    while (at < bytes.size()) {
        const int left = bytes.size() - at;
        const quint32 size = left < kSmallestBlock ? 0 : little<quint32>(bytes, at + 4);
        if (size < quint32(kSmallestBlock) || size > quint32(left)) {
            *problem = QStringLiteral("it is damaged at byte %1").arg(at);
            return false;
        }
        const QByteArray block = bytes.mid(at, int(size));
        const quint32 type = little<quint32>(block, 0);
        if (type == kSectionHeader) {
            parser.takeSection(block);
        } else if (type == kPacketBlock && !parser.takePacket(block)) {
            *problem = QStringLiteral("it is damaged at byte %1").arg(at);
            return false;
        }
        at += int(size);
    }
    parser.finish();
    return true;
}

bool readCapture(const QString& path, Capture* capture, QString* problem) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *problem = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    if (file.size() > kLargestFile) {
        *problem = QStringLiteral("%1: it is larger than any recording").arg(path);
        return false;
    }
    if (!parseCapture(file.readAll(), capture, problem)) {
        *problem = QStringLiteral("%1: %2").arg(path, *problem);
        return false;
    }
    return true;
}
