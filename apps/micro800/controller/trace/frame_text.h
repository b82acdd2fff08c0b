#ifndef APPS_MICRO800_CONTROLLER_TRACE_FRAME_TEXT_H
#define APPS_MICRO800_CONTROLLER_TRACE_FRAME_TEXT_H

#include <QByteArray>
#include <QStringList>

/// One encapsulated message as lines for a person, for --verbose: a heading, then one line for each
/// field with its offset, name and bytes in hexadecimal, and what a number means where it has a
/// name. `message` may contain anything, also too few bytes: bytes left over or in no known form
/// are shown as "data".
///
///   > RegisterSession request, 28 bytes
///     0000  command                  65 00
///     0002  length                   04 00                     4
QStringList frameText(const QByteArray& message, bool isReply);

#endif
