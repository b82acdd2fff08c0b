#ifndef COMMON_COMMAND_DATA_H
#define COMMON_COMMAND_DATA_H

#include <QByteArray>
#include <QString>

class CommunicatorCommand;

// What a driver asks about one of the runtime's commands. Any thread.

/// Both bit kinds (0 and 6).
bool isBitCommand(const CommunicatorCommand& command);
bool isByteCommand(const CommunicatorCommand& command);
bool isWordCommand(const CommunicatorCommand& command);
bool isDoubleWordCommand(const CommunicatorCommand& command);
bool isBlockCommand(const CommunicatorCommand& command);

/// The bits of `data` that a bit command asks for, as exactly the command's data size in bytes,
/// every other bit cleared. A kind-6 command has one byte, so at most 8 bits; a count of 0 is one
/// bit. Empty for a command of another kind and for one that GetSafeDataLen() refuses.
QByteArray getBitData(const CommunicatorCommand& command, const QByteArray& data);

/// Bytes of a buffer in which the command's data can be handled in whole units of every kind:
/// the command's data size rounded up to quad words. 0 for a command of more than 64 KiB, more
/// than any controller message carries.
int GetSafeDataLen(const CommunicatorCommand& command);

/// The command's data in such a buffer: the bytes of `data` up to the command's data size, then
/// zeros. Its size is GetSafeDataLen().
QByteArray ToSafeData(const CommunicatorCommand& command, const QByteArray& data);

/// The part of an address before its first colon, as written ("DINT0" of DINT0:COUNTER); empty
/// when there is no colon.
QString ExtractPrefixSymbol(const QString& address);
/// The part after the first colon, as written ("COUNTER"); the whole address when there is none.
QString ExtractPLCDeviceAddress(const QString& address);

#endif
