#ifndef TESTS_SUPPORT_CAPTURE_FILE_H
#define TESTS_SUPPORT_CAPTURE_FILE_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// A packet of a capture file, taken apart from the public formats and not with the product's code.
struct CapturedPacket {
    qint64 micros = 0;
    QString comment;
    int protocol = 0;  ///< 6 TCP, 17 UDP
    quint32 from = 0;
    quint32 to = 0;
    quint16 fromPort = 0;
    quint16 toPort = 0;
    quint32 sequence = 0;
    quint32 acknowledged = 0;
    int flags = 0;
    QByteArray payload;
    bool checksumsHold = false;
};

/// A whole capture file of the kind that the recorder writes.
struct CaptureFile {
    QString comment;      ///< of the section
    QString application;  ///< that wrote it
    QList<CapturedPacket> packets;

    /// Reads the bytes of a file. False with the reason in `problem` when a block is not whole.
    bool parse(const QByteArray& bytes, QString* problem);
    /// Reads a file by name.
    bool read(const QString& path, QString* problem);

    QStringList comments() const;
    /// The payloads to (port 44818) or from the controller, joined, in the order of time.
    QByteArray bytesToController() const;
    QByteArray bytesFromController() const;
    /// The last encapsulated request with this command.
    QByteArray lastRequest(int command) const;
};

#endif
