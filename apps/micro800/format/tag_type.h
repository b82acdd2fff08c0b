#ifndef APPS_MICRO800_FORMAT_TAG_TYPE_H
#define APPS_MICRO800_FORMAT_TAG_TYPE_H

#include <QString>
#include <QStringList>

/// What the bytes of a value are.
enum class ValueKind { kBool, kSigned, kUnsigned, kReal, kString };

/// One of the ten types that a tag's prefix can name.
struct TagType {
    const char* name;    ///< "DINT"
    const char* prefix;  ///< "DINT0", the text before the colon of an address
    ValueKind kind;
    int size;  ///< bytes an element; 0 for STRING, whose elements have no fixed size
};

/// The most characters of a controller's short string: its length is one byte.
const int kLongestString = 255;

/// The type of exactly this prefix (upper case, with its "0"); null for any other. The records
/// live as long as the program.
const TagType* tagTypeByPrefix(const QString& prefix);

/// All prefixes, in the order in which help texts name them.
QStringList tagPrefixes();

#endif
