#ifndef APPS_MICRO800_CONTROLLER_TRACE_FIELD_LINES_H
#define APPS_MICRO800_CONTROLLER_TRACE_FIELD_LINES_H

#include <QByteArray>
#include <QStringList>

/// Goes through the bytes of a message and writes a line for each field. Nothing is read past the
/// end: a field that is not whole is shown with the bytes that are there.
class FieldLines {
 public:
    explicit FieldLines(const QByteArray& message) : bytes(message) {}

    int left() const { return bytes.size() - at; }
    /// The unsigned little-endian number in the next `size` (1 to 4) bytes, without going on; 0
    /// when they are not there.
    quint32 peek(int size, int ahead = 0) const;
    /// The next `size` bytes, or those that are there, without going on.
    QByteArray ahead(int size) const { return bytes.mid(at, size); }

    /// The next `size` bytes as one field; what is longer than a line goes over several.
    void field(const char* name, int size, const QString& meaning = QString());
    /// The next `size` bytes as a field of a little-endian number, which is shown in decimal.
    quint32 number(const char* name, int size);
    /// What is left, when anything is.
    void rest(const char* name);

    QStringList lines;

 private:
    const QByteArray bytes;
    int at = 0;
};

#endif
