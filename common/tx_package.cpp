#include "common/tx_package.h"

#include <QStringList>

#include "common/checksums.h"
#include "common/hex.h"
#include "common/packing.h"

namespace {

QByteArray asciiOf(quint8 value) {
    return QByteArray(1, static_cast<char>(value)).toHex().toUpper();
}

}  // namespace

bool TxPackage::append(const QByteArray& bytes) {
    if (bytes.size() > kLargestFrame - frame.size()) {
        return false;
    }
    if (starts.isEmpty()) {
        starts.append(0);
    }
    frame.append(bytes);
    return true;
}

bool TxPackage::appendSection(const QByteArray& bytes) {
    if (bytes.size() > kLargestFrame - frame.size()) {
        return false;
    }
    starts.append(frame.size());
    frame.append(bytes);
    return true;
}

bool TxPackage::appendByte(quint8 value) {
    return append(ByteArrayPack("c", value));
}

bool TxPackage::appendWord(quint16 value) {
    return append(ByteArrayPack("v", value));
}

bool TxPackage::appendDWord(quint32 value) {
    return append(ByteArrayPack("V", value));
}

bool TxPackage::appendString(const QByteArray& text) {
    return append(text);
}

bool TxPackage::appendByte2Ascii(quint8 value) {
    return append(asciiOf(value));
}

bool TxPackage::appendLRCByte(int firstIndex) {
    return appendByte(longitudinalCheck(firstIndex));
}

bool TxPackage::appendLRCAscii(int firstIndex) {
    return appendByte2Ascii(longitudinalCheck(firstIndex));
}

bool TxPackage::appendFCSAscii(int firstIndex) {
    return appendByte2Ascii(calculateFCS(firstIndex));
}

quint8 TxPackage::calculateFCS(int firstIndex) const {
    const int count = bytesFrom(firstIndex);
    return count == 0 ? 0 : XorUInt8CheckSum(frame.constData() + firstIndex, count);
}

quint8 TxPackage::longitudinalCheck(int firstIndex) const {
    const int count = bytesFrom(firstIndex);
    const int sum = count == 0 ? 0 : UInt8CheckSum(frame.constData() + firstIndex, count);
    return static_cast<quint8>(-sum & 0xFF);
}

/// How many bytes the frame has from there on; none for an index outside it.
int TxPackage::bytesFrom(int firstIndex) const {
    return firstIndex < 0 || firstIndex > frame.size() ? 0 : frame.size() - firstIndex;
}

bool TxPackage::setSectionSize(int section, int size) {
    const int start = sectionStartIndex(section);
    if (start < 0 || size < 0) {
        return false;
    }
    const int change = size - sectionSize(section);
    if (change > kLargestFrame - frame.size()) {
        return false;
    }
    const int end = start + sectionSize(section);
    if (change < 0) {
        frame.remove(end + change, -change);
    } else {
        frame.insert(end, QByteArray(change, '\0'));
    }
    for (int later = section + 1; later < starts.size(); ++later) {
        starts[later] += change;
    }
    return true;
}

int TxPackage::sectionSize(int section) const {
    if (section < 0 || section >= starts.size()) {
        return 0;
    }
    const bool last = section + 1 == starts.size();
    return (last ? frame.size() : starts.at(section + 1)) - starts.at(section);
}

int TxPackage::sectionStartIndex(int section) const {
    return starts.value(section, -1);
}

const unsigned char* TxPackage::data() const {
    return reinterpret_cast<const unsigned char*>(frame.constData());
}

QString TxPackage::toString() const {
    QStringList sections;
    for (int section = 0; section < starts.size(); ++section) {
        sections.append(QString::fromLatin1(
            spacedHex(frame.mid(starts.at(section), sectionSize(section))).constData()));
    }
    return sections.join(QLatin1String(" | "));
}

void TxPackage::clearAll() {
    frame.clear();
    starts.clear();
}
