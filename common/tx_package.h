#ifndef COMMON_TX_PACKAGE_H
#define COMMON_TX_PACKAGE_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

/// Builds a frame for a line: bytes in sections that follow each other (header, body, check).
///
/// Sections are numbered from 0. Bytes are appended to the last section; the first bytes open
/// section 0 by themselves. Indexes into the frame count from its first byte. A frame contains at
/// most kLargestFrame bytes: an operation that would make it longer returns false
/// and leaves the frame as it was. A value record of one thread at a time.
class TxPackage {
 public:
    enum { kLargestFrame = 1024 * 1024 };

    /// Starts a new section that contains `bytes`; further bytes are appended to it.
    bool appendSection(const QByteArray& bytes = QByteArray());

    bool appendByte(quint8 value);
    /// Two bytes, least significant first.
    bool appendWord(quint16 value);
    /// Four bytes, least significant first.
    bool appendDWord(quint32 value);
    /// The text's bytes unchanged, without a terminating zero.
    bool appendString(const QByteArray& text);
    /// The byte as two upper-case hexadecimal characters, high digit first.
    bool appendByte2Ascii(quint8 value);

    /// Appends the longitudinal check of the frame's bytes from `firstIndex` on: the two's
    /// complement of their sum modulo 256, so that they and the check add up to 0.
    bool appendLRCByte(int firstIndex = 0);
    /// The same check as two hexadecimal characters.
    bool appendLRCAscii(int firstIndex = 0);
    /// Exclusive or of the frame's bytes from `firstIndex` on, as two hexadecimal characters.
    bool appendFCSAscii(int firstIndex = 0);
    /// That exclusive or; 0 for an index outside the frame.
    quint8 calculateFCS(int firstIndex = 0) const;

    /// Cuts a section, or fills it with zero bytes at its end. Refused for a section that is not
    /// there and for a negative size.
    bool setSectionSize(int section, int size);
    /// Bytes of a section, 0 when it is not there.
    int sectionSize(int section) const;
    /// Index of a section's first byte in the frame, -1 when the section is not there.
    int sectionStartIndex(int section) const;
    int numberOfSections() const { return starts.size(); }

    /// Bytes of the whole frame.
    int totalSize() const { return frame.size(); }
    /// The frame's bytes, valid until it is changed or destroyed.
    const unsigned char* data() const;
    QByteArray byteArrayData() const { return frame; }
    /// The frame for a log: bytes in hexadecimal with blanks between them, sections divided by
    /// " | " ("02 30 | 41").
    QString toString() const;

    /// Takes all sections away.
    void clearAll();

 private:
    bool append(const QByteArray& bytes);
    quint8 longitudinalCheck(int firstIndex) const;
    int bytesFrom(int firstIndex) const;

    QByteArray frame;
    QList<int> starts;  ///< index of each section's first byte
};

#endif
