#ifndef APPS_MICRO800_FORMAT_VALUE_FORMAT_H
#define APPS_MICRO800_FORMAT_VALUE_FORMAT_H

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include "apps/micro800/format/tag_type.h"

/// Values between the driver's bytes (little-endian, as the controller stores them) and text.
///
///   BOOL            false or true; any byte but 0 is true. Read from text also as on, off, yes,
///                   no, 1 or 0, in any case.
///   whole numbers   decimal; read from text also as hexadecimal (0x2A), as a number like any
///                   other: 0xFFFF is 65535 and does not fit INT.
///   REAL, LREAL     the shortest text that gives the same bits again; inf, -inf and nan when the
///                   controller stores them. Only finite numbers are read from text.
///   STRING          in double quotes, escaped as quotedText() of format/escape.h does.
///                   One byte per character (Latin-1). Text is read unchanged, without quotes.

/// How whole numbers are written.
enum class NumberBase {
    kDecimal,
    kHexadecimal,  ///< 0x and all digits of the type: -2 of an INT is 0xFFFE
};

/// The text of `count` elements, separated by blanks. `bytes` shorter than the elements need
/// gives an empty text. For STRING everything from the padding on is left out: the driver fills
/// a short string up with zero bytes, so zero bytes at a string's own end cannot be told apart.
QString valueText(const TagType& type, const QByteArray& bytes, int count,
                  NumberBase base = NumberBase::kDecimal);

/// The same as a JSON value: a number, a boolean or a string. Infinities and not-a-number, for
/// which JSON has no number, are the strings "inf", "-inf" and "nan". An array when `count` is
/// above 1; null when `bytes` is too short. JSON has no hexadecimal numbers: such are strings.
QJsonValue valueJson(const TagType& type, const QByteArray& bytes, int count,
                     NumberBase base = NumberBase::kDecimal);

/// Appends the bytes of one value to `bytes`. False when the text is no value of the type or does
/// not fit it: `problem` says so in a sentence that begins with the text; `bytes` stays.
bool appendValue(const TagType& type, const QString& text, QByteArray* bytes, QString* problem);

/// Double quotes and escapes around Latin-1 characters.
QString quotedString(const QByteArray& characters);

#endif
