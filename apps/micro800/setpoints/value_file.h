#ifndef APPS_MICRO800_SETPOINTS_VALUE_FILE_H
#define APPS_MICRO800_SETPOINTS_VALUE_FILE_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include "apps/micro800/format/address_list.h"

/// The values of what one address names.
struct SavedValue {
    ListedAddress address;
    QVector<QByteArray> elements;  ///< address.count() of them, in the form of element_value.h

    const TagType& type() const { return *address.first.type; }
};

/// An address that could not be read when the others were saved.
struct UnsavedValue {
    QString address;
    QString type;
    QString problem;
};

/// A file of values, JSON:
///
///   {"format": "micro800-values/1",
///    "saved": "2026-11-21T14:03:07.112Z",
///    "controller": {"host": ..., "port": ..., and the facts of "micro800 identify --json"},
///    "values": [{"address": "DINT0:COUNTER", "type": "DINT", "value": 42},
///               {"address": "REAL0:LEVELS[0..2]", "type": "REAL", "value": [0.5, 1, 1.5]}]}
///
/// The value of a range is a list with all of its elements, the last index fastest. An element is a
/// range of one, [3..3]. An address that could not be read has a "problem" in place of its value.
struct ValueFile {
    QString saved;           ///< when, ISO 8601 in UTC
    QJsonObject controller;  ///< what it was; may be empty
    QVector<SavedValue> values;
    QVector<UnsavedValue> unsaved;
};

/// The file's bytes: one value a line, so that two files can be compared by lines.
QByteArray valueFileText(const ValueFile& file);

/// Takes a file's bytes apart. False for anything that valueFileText() would not have written, but
/// for keys that it does not know: `problem` says where and what.
bool parseValueFile(const QByteArray& text, ValueFile* file, QString* problem);

#endif
