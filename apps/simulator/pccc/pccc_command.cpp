#include "apps/simulator/pccc/pccc_command.h"

#include "apps/simulator/pccc/type_parameter.h"

namespace sim {

namespace {

const uint8_t kCommandCode = 0x0F;

const PcccStatus kFormat = {kPcccIllegalCommand, 0};
const PcccStatus kAddress = {kPcccAddressProblem, 0};

PcccStatus extended(PcccExtSts ext) {
    return {kPcccExtended, ext};
}

/// Fields of the typed commands before the address, in elements.
struct Packet {
    uint16_t offset = 0;
    uint16_t total = 0;
};

bool takePacket(ByteReader& reader, Packet* packet) {
    return reader.take16(&packet->offset) && reader.take16(&packet->total);
}

/// What the address of a typed command names, before any offset.
struct Item {
    size_t at = 0;      ///< first byte
    size_t size = 0;    ///< bytes
    size_t behind = 0;  ///< items from this one on
    PcccDataType type = kPcccInteger;
};

/// A word of a structure is located alone: its neighbours are other things.
PcccStatus locate(const FileAddress& address, DataTable& table, PcccCommand* command, Item* item) {
    command->file = table.find(address.file);
    const FileType* type = command->file ? command->file->type : nullptr;
    command->address = address.text(type);
    if (!type || address.element >= command->file->elements) {
        return extended(kPcccNothingThere);
    }
    item->at = address.element * type->elementSize();
    item->size = type->elementSize();
    item->behind = command->file->elements - address.element;
    item->type = type->data;
    if (address.namesWord) {
        if (!type->isStructure() || address.word >= type->units) {
            return extended(kPcccNothingThere);
        }
        item->at += address.word * type->unit;
        item->size = type->unit;
        item->behind = 1;
        item->type = address.word == 0 ? kPcccBitString : kPcccInteger;
    }
    return {};
}

/// Sets the range of `count` items from the packet's offset on.
PcccStatus setRange(const Packet& packet, size_t count, const Item& item, PcccCommand* command) {
    if (count == 0 || packet.offset + count > packet.total) {
        return extended(kPcccIllegalValue);
    }
    if (packet.offset + count > item.behind) {
        return extended(kPcccPastEnd);
    }
    if (count * item.size > kMaxPcccData) {
        return extended(kPcccDataTooLarge);
    }
    command->at = item.at + packet.offset * item.size;
    command->size = count * item.size;
    command->type = item.type;
    command->elementSize = item.size;
    return {};
}

// Packet offset, total transaction, address, size.
PcccStatus decodeTypedRead(ByteReader& reader, DataTable& table, PcccCommand* command) {
    Packet packet;
    FileAddress address;
    if (!takePacket(reader, &packet)) {
        return kFormat;
    }
    const PcccStatus status = takeLogicalAddress(reader, &address);
    uint16_t count = 0;
    if (!status.ok()) {
        return status;
    }
    if (!reader.take16(&count) || reader.left() != 0) {
        return kFormat;
    }
    command->count = count;
    Item item;
    const PcccStatus located = locate(address, table, command, &item);
    return located.ok() ? setRange(packet, count, item, command) : located;
}

/// The elements of a typed write: one, or an array that ends with the command.
struct TypedData {
    TypeParameter element;
    size_t count = 0;
    ByteView bytes;
};

bool takeTypedData(ByteReader& reader, TypedData* data) {
    if (!takeTypeParameter(reader, &data->element)) {
        return false;
    }
    const bool isArray = data->element.type == kPcccArray;
    if (isArray &&
        (data->element.size != reader.left() || !takeTypeParameter(reader, &data->element))) {
        return false;
    }
    data->bytes = reader.rest();
    if (data->element.size == 0 || data->bytes.empty() ||
        data->bytes.size() % data->element.size != 0) {
        return false;
    }
    data->count = data->bytes.size() / data->element.size;
    return isArray || data->count == 1;
}

bool isDataType(uint32_t type) {
    return (type >= 1 && type < kPcccArray) || type == kPcccAddress || type == kPcccBcd;
}

/// 16 bits are 16 bits, be they a number or not.
bool fits(const TypeParameter& element, const Item& item) {
    const bool isWord = item.type == kPcccBitString || item.type == kPcccInteger;
    const bool isSame =
        element.type == uint32_t(item.type) ||
        (isWord && (element.type == kPcccBitString || element.type == kPcccInteger));
    return isSame && element.size == item.size;
}

// Packet offset, total transaction, address, type/data parameter, data.
PcccStatus decodeTypedWrite(ByteReader& reader, DataTable& table, PcccCommand* command) {
    Packet packet;
    FileAddress address;
    if (!takePacket(reader, &packet)) {
        return kFormat;
    }
    const PcccStatus status = takeLogicalAddress(reader, &address);
    TypedData data;
    if (!status.ok()) {
        return status;
    }
    if (!takeTypedData(reader, &data)) {
        return kFormat;
    }
    command->count = int64_t(data.count);
    command->written = data.bytes;
    Item item;
    const PcccStatus located = locate(address, table, command, &item);
    if (!located.ok()) {
        return located;
    }
    if (!isDataType(data.element.type)) {
        return extended(kPcccIllegalType);
    }
    return fits(data.element, item) ? setRange(packet, data.count, item, command)
                                    : extended(kPcccTypeMismatch);
}

/// Whole words from the named one on, on into the next elements.
PcccStatus locateBytes(const FileAddress& address, uint8_t size, DataTable& table,
                       PcccCommand* command) {
    const FileType* type = findFileTypeByCode(uint8_t(address.typeCode));
    command->address = address.text(type);
    if (!type || size == 0 || size % kPcccWord != 0 || size > kMaxPcccData) {
        return kFormat;
    }
    command->file = table.find(address.file);
    if (!command->file || command->file->type != type ||
        address.element >= command->file->elements || address.word >= type->units) {
        return kAddress;
    }
    command->at = address.element * type->elementSize() + address.word * type->unit;
    command->size = size;
    return size <= command->file->bytes.size() - command->at ? PcccStatus() : kAddress;
}

// Byte size, file number, file type, element, sub-element; a write with mask has the mask then; a
// write has its data.
PcccStatus decodeThreeAddress(ByteReader& reader, DataTable& table, PcccCommand* command) {
    uint8_t size = 0;
    FileAddress address;
    if (!reader.take8(&size) || !takeThreeAddressField(reader, &address)) {
        return kFormat;
    }
    command->count = size;
    if (command->function == kMaskedWrite && !reader.take16(&command->mask)) {
        return kFormat;
    }
    command->written = reader.rest();
    const PcccStatus located = locateBytes(address, size, table, command);
    const size_t wanted = command->function == kThreeAddressRead ? 0 : size;
    return reader.left() == wanted ? located : kFormat;
}

PcccStatus decodeFunction(ByteReader& reader, DataTable& table, PcccCommand* command) {
    switch (command->function) {
        case kTypedRead:
            return decodeTypedRead(reader, table, command);
        case kTypedWrite:
            return decodeTypedWrite(reader, table, command);
        case kThreeAddressRead:
        case kThreeAddressWrite:
        case kMaskedWrite:
            return decodeThreeAddress(reader, table, command);
        default:
            return kFormat;
    }
}

void store(const PcccCommand& command) {
    for (size_t i = 0; i < command.size; ++i) {
        uint8_t& byte = command.file->bytes[command.at + i];
        const uint8_t mask = uint8_t(command.mask >> (8 * (i % kPcccWord)));
        byte = uint8_t((byte & ~mask) | (command.written[i] & mask));
    }
}

void putData(const PcccCommand& command, Bytes* reply) {
    if (command.function == kTypedRead) {
        const TypeParameter element = {command.type, uint32_t(command.elementSize)};
        Bytes parameter;
        putTypeParameter(parameter, element);
        if (command.count != 1) {
            putArrayParameter(*reply, uint32_t(parameter.size() + command.size));
        }
        putBytes(*reply, parameter);
    }
    putBytes(*reply, ByteView(command.file->bytes.data() + command.at, command.size));
}

void putReply(const PcccCommand& command, Bytes* reply) {
    put8(*reply, command.code | kPcccReplyFlag);
    put8(*reply, command.status.sts);
    put16(*reply, command.transaction);
    if (command.status.sts == kPcccExtended) {
        put8(*reply, command.status.ext);
    }
    if (!command.status.ok() || !command.file) {
        return;
    }
    if (command.function == kTypedRead || command.function == kThreeAddressRead) {
        putData(command, reply);
    } else {
        store(command);
    }
}

}  // namespace

const char* pcccFunctionName(uint8_t function) {
    switch (function) {
        case kTypedWrite:
            return "TypedWrite";
        case kTypedRead:
            return "TypedRead";
        case kThreeAddressRead:
            return "ThreeAddressRead";
        case kThreeAddressWrite:
            return "ThreeAddressWrite";
        case kMaskedWrite:
            return "MaskedWrite";
        default:
            return nullptr;
    }
}

bool decodePccc(ByteView bytes, DataTable& table, PcccCommand* command) {
    ByteReader reader(bytes);
    uint8_t status = 0;
    *command = PcccCommand();
    if (!reader.take8(&command->code) || !reader.take8(&status) ||
        !reader.take16(&command->transaction)) {
        return false;
    }
    uint8_t function = 0;
    if (command->code != kCommandCode || status != 0 || !reader.take8(&function)) {
        command->status = kFormat;
        return true;
    }
    command->function = function;
    command->status = decodeFunction(reader, table, command);
    return true;
}

void answerPccc(size_t most, PcccCommand* command, Bytes* reply) {
    const size_t begin = reply->size();
    putReply(*command, reply);
    if (reply->size() - begin > most) {
        reply->resize(begin);
        command->file = nullptr;
        command->status = command->function == kTypedRead ? extended(kPcccDataTooLarge) : kFormat;
        putReply(*command, reply);
    }
}

}  // namespace sim
