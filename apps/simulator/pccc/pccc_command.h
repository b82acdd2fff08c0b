#ifndef APPS_SIMULATOR_PCCC_PCCC_COMMAND_H
#define APPS_SIMULATOR_PCCC_PCCC_COMMAND_H

#include "apps/simulator/pccc/file_address.h"

// PCCC commands on the data table (DF1 Protocol and Command Set, 1770-6.5.16).

namespace sim {

enum PcccFunction : uint8_t {
    kTypedWrite = 0x67,
    kTypedRead = 0x68,
    kThreeAddressRead = 0xA2,
    kThreeAddressWrite = 0xAA,
    kMaskedWrite = 0xAB,
};

/// The function's name, null for any other code.
const char* pcccFunctionName(uint8_t function);

/// Command, status and transaction number: the head of requests and replies.
const size_t kPcccHead = 1 + 1 + 2;
/// Set in the command of every reply.
const uint8_t kPcccReplyFlag = 0x40;
/// The most data bytes in one request or reply.
const size_t kMaxPcccData = 244;

/// A command that has been read and checked, but not carried out.
struct PcccCommand {
    uint8_t code = 0;  ///< CMD
    uint16_t transaction = 0;
    int function = -1;    ///< -1 without one
    std::string address;  ///< as people write it; empty as long as none has been read
    int64_t count = -1;   ///< elements asked for, of commands with three address fields bytes
    PcccStatus status;    ///< of the answer; nothing is carried out when it is not 0

    // Where the data are, when the status is 0.
    DataFile* file = nullptr;
    size_t at = 0;                     ///< first byte
    size_t size = 0;                   ///< bytes
    PcccDataType type = kPcccInteger;  ///< of a typed read
    size_t elementSize = 0;            ///< bytes, of a typed read
    uint16_t mask = 0xFFFF;            ///< bits of each word that a write may change
    ByteView written;                  ///< data of a write, also of a refused one
};

/// Reads and checks a command. False when not even its head is there, so that there is nothing to
/// answer; anything else that is wrong is left in the command's status.
bool decodePccc(ByteView bytes, DataTable& table, PcccCommand* command);

/// Carries the command out, unless its status says no, and appends the whole reply. A read whose
/// reply has more than `most` bytes is refused as one of too much data, and its status says so.
void answerPccc(size_t most, PcccCommand* command, Bytes* reply);

}  // namespace sim

#endif
