#ifndef EIP_CIP_PCCC_SERVICES_H
#define EIP_CIP_PCCC_SERVICES_H

#include <cstdint>

#include "eip/cip/pccc_data.h"
#include "eip/cip/pccc_send.h"

// Reading and writing the data tables of PLC-5, SLC 500 and MicroLogix controllers. Addresses are
// those of pccc_address.h. `transaction` differs from that of the previous request;
// a reply that bears another is refused.
//
// A command goes over the target's connection when it has one, else unconnected. Failures before
// or instead of a reply are recorded as the builders and send functions say; the status byte of a
// reply is recorded as (6, status, 0), also 0 for success.

/// Kinds of controllers, as the connection functions count them.
enum PlcKind { PLC_KIND_PLC5 = 1, PLC_KIND_SLC500 = 2, PLC_KIND_LOGIX = 3 };

/// Reads `count` elements with the command of that kind of controller: three address fields for
/// PLC_KIND_SLC500, a typed read for any other. Returns the decoded reply, to be freed with
/// _FreePLCRead, its mask set when the address names a bit; or null, also for a reply with another
/// number of elements (0, -20, 0).
_PLC_Read* _ReadPLCData(const _PCCC_Target* target, int plcKind, uint16_t transaction,
                        const char* address, uint16_t count);
/// Reads with a typed read (logical binary address).
_PLC_Read* _ReadPLCData_Ex(const _PCCC_Target* target, uint16_t transaction, const char* address,
                           uint16_t count);
/// Reads with three address fields. The command starts at a file's element, so whole timers,
/// counters and controls are read and the word that the address names is picked from each; in input
/// and output files the words up to the named one are read too. (0, -31, 0) above 255 bytes.
_PLC_Read* _ReadPLCData_ExPlus(const _PCCC_Target* target, uint16_t transaction,
                               const char* address, uint16_t count);

/// Writes `count` elements of `type` with a typed write. `data` contains little-endian values of 2
/// bytes for integers and bit strings, 4 for floating point; another type is refused with
/// (0, -24, 0), an address that names a bit with (0, -21, 0). Returns the reply's status byte (0 is
/// success), or -1 without a reply.
int _WritePLCData(const _PCCC_Target* target, uint16_t transaction, const char* address,
                  _PLC_Data_Type type, const void* data, uint16_t count);

/// Sets the bits of the word at `address` that `mask` has set to those of `value`; the others stay
/// as they are. The mask counts, not a bit that the address names. Result as above.
int WriteMaskAndDataToPLC(const _PCCC_Target* target, uint16_t transaction, const char* address,
                          uint16_t mask, uint16_t value);

/// Writes `byteCount` bytes (at most 255) from `address` on, which names no bit (0, -21, 0). Result
/// as above.
int WriteBytesToPLC(const _PCCC_Target* target, uint16_t transaction, const char* address,
                    const void* data, int byteCount);

#endif
