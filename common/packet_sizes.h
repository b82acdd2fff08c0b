#ifndef COMMON_PACKET_SIZES_H
#define COMMON_PACKET_SIZES_H

// The capacity of one packet of the driver's connection.

/// Bytes of a message over the connection, its sequence count included: what the Forward Open asks
/// for.
const int kConnectionBytes = 504;

/// Bytes of values in the reply to a read. The rest are the sequence count, the head of the reply
/// and the data type.
const int kReplyValueBytes = kConnectionBytes - 2 - 4 - 2;

#endif
