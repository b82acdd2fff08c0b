#ifndef APPS_MICRO800_FORMAT_ADDRESS_H
#define APPS_MICRO800_FORMAT_ADDRESS_H

#include <QString>

#include "apps/micro800/format/tag_type.h"
#include "runtime/communicator_command.h"

/// A tag address as the operator writes it: a type prefix, a colon, the tag's name and, for an
/// element of an array, one to three indexes.
///
///   DINT0:COUNTER    INT0:GRID[2,3]    STRING0:NAME
struct TagAddress {
    QString text;                   ///< as written; what the driver gets
    const TagType* type = nullptr;  ///< never null after a successful parse
    QString name;                   ///< the text after the first "0:"
    bool isElement = false;         ///< the driver takes it as an element of an array
};

/// Takes an address apart. False for one that the driver could not serve, or would serve with
/// another tag than the one written; `problem` names the address and says why.
bool parseTagAddress(const QString& text, TagAddress* address, QString* problem);

/// The command that reads or writes `count` elements. False when the driver cannot serve that
/// count in one command: a plain name is always one element, and so is a STRING.
bool commandFor(const TagAddress& address, int count, CommunicatorCommand* command,
                QString* problem);

/// What to say about a command that asks for more than the driver's block of `blockSize` bytes.
QString tooLarge(const CommunicatorCommand& command, int blockSize);

#endif
