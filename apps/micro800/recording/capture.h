#ifndef APPS_MICRO800_RECORDING_CAPTURE_H
#define APPS_MICRO800_RECORDING_CAPTURE_H

#include <QByteArray>
#include <QString>
#include <QVector>

/// One item of a recording.
struct CaptureEntry {
    enum Kind { kEvent, kRequest, kReply };
    qint64 micros = 0;  ///< since 1970
    Kind kind = kEvent;
    QString text;      ///< of an event
    QByteArray bytes;  ///< of a message, from its encapsulation header on; it may not be whole
};

/// A recording of the driver's flight recorder.
struct Capture {
    QString why;     ///< "connection-lost", ...
    QString detail;  ///< the failure's text, empty without one
    QVector<CaptureEntry> entries;
};

/// Takes the bytes of a capture file apart (IETF draft-ietf-opsawg-pcapng, low byte first): TCP
/// segments to and from port 44818 become messages again, comments become events. Nothing of the
/// bytes is trusted. False with the reason in `problem`.
bool parseCapture(const QByteArray& bytes, Capture* capture, QString* problem);

/// Reads a file of at most 64 MB.
bool readCapture(const QString& path, Capture* capture, QString* problem);

#endif
