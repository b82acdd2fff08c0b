#ifndef TESTS_UNIT_APPS_MICRO800_QT_PRINTERS_H
#define TESTS_UNIT_APPS_MICRO800_QT_PRINTERS_H

#include <QByteArray>
#include <QString>
#include <ostream>

// Texts and bytes in GoogleTest's messages.

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << qPrintable(text) << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << bytes.toHex(' ').constData();
}
QT_END_NAMESPACE

#endif
