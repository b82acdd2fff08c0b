#ifndef APPS_MICRO800_SETPOINTS_ELEMENT_VALUE_H
#define APPS_MICRO800_SETPOINTS_ELEMENT_VALUE_H

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include "apps/micro800/format/tag_type.h"

// One element of a tag as bytes in one form only, so that equal values are equal bytes: BOOL 00 or
// 01; a STRING without the zero bytes at its end, which the driver pads with; not-a-number as the
// quiet one. All other bytes are as the controller stores them, little-endian.

/// The driver's bytes of one element in that form.
QByteArray normalElement(const TagType& type, const QByteArray& bytes);

/// A number, a boolean or a string, from which elementFrom() gives the same bytes again. What JSON
/// has no number for is a string: inf, -inf, nan, and -0, which its readers take for 0.
QJsonValue elementJson(const TagType& type, const QByteArray& element);

/// False when the value is none of the type; `problem` says so.
bool elementFrom(const TagType& type, const QJsonValue& json, QByteArray* element,
                 QString* problem);

/// As read prints it.
QString elementText(const TagType& type, const QByteArray& element);

#endif
