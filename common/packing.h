#ifndef COMMON_PACKING_H
#define COMMON_PACKING_H

#include <stdarg.h>

#include <QByteArray>

// Binary records by a format string: letters, each optionally with a decimal count before it.
//
//   letter     without a count                    with a count k
//   c C        1 byte                             k bytes
//   s S        2 bytes, least significant first   -
//   v          2 bytes, least significant first   k 16-bit items as they lie in memory
//   n          2 bytes, most significant first    k 16-bit items, most significant byte first
//   i l I L    4 bytes, least significant first   -
//   V          4 bytes, least significant first   k 32-bit items as they lie in memory
//   N          4 bytes, most significant first    k 32-bit items, most significant byte first
//   x          1 zero byte, no argument           k zero bytes, no argument
//   X          1 byte left as it is, no argument  k bytes left as they are, no argument
//
// Arguments when packing: an int or unsigned int for a letter without a count (also for l and L),
// a pointer to k items for one with a count. Arguments when unpacking: a pointer to an object of
// 1, 2 or 4 bytes, or to k of them; x and X skip and have none.
//
// A format and its arguments must fit each other, as with printf; the compiler does not see it.
// A null pointer among the arguments is refused. Any thread.

/// Packs into `buffer`, which must have room for everything that the format names.
///
/// Returns the number of bytes packed, those that X skips counted; -1 for a count below 1, a
/// count before a letter that takes none, and a record of more than 2^31-1 bytes; 0 at a letter
/// outside the table. What was packed before the failure stays in the buffer.
int DataPack(void* buffer, const char* format, ...);
int VDataPack(void* buffer, const char* format, va_list arguments);

/// The same with the size of the buffer: -1 also when the next item does not fit into it, before
/// any of its bytes is written.
int BoundedDataPack(void* buffer, int size, const char* format, ...);
int VBoundedDataPack(void* buffer, int size, const char* format, va_list arguments);

/// Packs into a new array; bytes that X skips are zero. At a failure of the format the bytes
/// packed so far are returned, also when the record would become larger than 1 GiB.
QByteArray ByteArrayPack(const char* format, ...);
QByteArray VByteArrayPack(const char* format, va_list arguments);

/// Unpacks from `data`, which must contain all items that the format names.
///
/// Returns the number of bytes taken; -1 for a letter outside the table, a count below 1, a count
/// before a letter that takes none, and a record of more than 2^31-1 bytes. Items before the
/// failure have been stored.
int DataUnpack(const void* data, const char* format, ...);
int VDataUnpack(const void* data, const char* format, va_list arguments);

/// The same with the size of the data: -1 also when the next item is not wholly in it.
int BoundedDataUnpack(const void* data, int size, const char* format, ...);
int VBoundedDataUnpack(const void* data, int size, const char* format, va_list arguments);

#endif
