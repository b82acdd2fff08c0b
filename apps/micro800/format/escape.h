#ifndef APPS_MICRO800_FORMAT_ESCAPE_H
#define APPS_MICRO800_FORMAT_ESCAPE_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// Text that came from a controller, a project database or a file, made harmless for the place that
/// shows it: one function for each place. Such text may be anything, also what a terminal obeys
/// (ESC, BEL, the one-character CSI 9B), what turns the direction of writing round, and the ends of
/// lines and fields. All of them are free of state and may be used on any thread.
///
/// What none of the places can show as it is (control characters, 7F to 9F among them, format
/// characters, separators of lines, halves of a surrogate pair) becomes \n, \r, \t, \xNN, \uNNNN or
/// \UNNNNNNNN, two, four or eight hexadecimal digits of the code point.
///
/// Bytes of one character each become a text by QString::fromLatin1(data, size): without the size
/// it ends at the first zero byte.

/// For a line of a terminal, a comment of a capture, a log: one line, otherwise as it is. A
/// backslash stays a backslash, so that paths can be read; the text cannot be taken back from it.
QString terminalText(const QString& text);

/// The same in double quotes, with \" and \\; two different texts never give the same.
QString quotedText(const QString& text);

/// One JSON object on one line, without a line feed at its end. Those characters are \uNNNN within
/// its strings, and a reader gets every one of them back.
QByteArray jsonText(const QJsonObject& object);

/// One field of a CSV record (RFC 4180), always one line: backslashes doubled, then in double
/// quotes where it contains a comma, a semicolon, a quote or a blank at an end. A text that a
/// spreadsheet would compute, because it begins with = + - @, gets a leading apostrophe, and so
/// does one that begins with an apostrophe; a reader takes one away. Not for numbers, which are
/// what they are.
QString csvField(const QString& text);

/// For the text of an HTML element and for an attribute's value in either kind of quotes.
QString htmlText(const QString& text);

/// For the value of a label in the text format of Prometheus, without the quotes around it. What it
/// shows there is terminalText().
QString prometheusText(const QString& text);

#endif
