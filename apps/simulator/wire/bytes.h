#ifndef APPS_SIMULATOR_WIRE_BYTES_H
#define APPS_SIMULATOR_WIRE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sim {

using Bytes = std::vector<uint8_t>;

/// Bytes that somebody else owns; valid as long as the owner does not change them.
class ByteView {
 public:
    ByteView() = default;
    ByteView(const uint8_t* data, size_t size) : first(data), length(size) {}
    ByteView(const Bytes& bytes) : first(bytes.data()), length(bytes.size()) {}  // NOLINT

    const uint8_t* data() const { return first; }
    size_t size() const { return length; }
    bool empty() const { return length == 0; }
    /// `at` is below size().
    uint8_t operator[](size_t at) const { return first[at]; }
    /// `at` is at most size().
    ByteView from(size_t at) const { return ByteView(first + at, length - at); }

 private:
    const uint8_t* first = nullptr;
    size_t length = 0;
};

/// Takes little-endian fields off the front of a view. Every taker returns false, and takes
/// nothing, when fewer bytes are left than it needs.
class ByteReader {
 public:
    explicit ByteReader(ByteView view) : bytes(view) {}

    size_t left() const { return bytes.size() - at; }
    ByteView rest() const { return bytes.from(at); }
    bool take8(uint8_t* value);
    bool take16(uint16_t* value);
    bool take32(uint32_t* value);
    bool take(size_t size, ByteView* value);
    bool skip(size_t size);

 private:
    ByteView bytes;
    size_t at = 0;
};

/// Little-endian fields at the end of `out`.
void put8(Bytes& out, uint8_t value);
void put16(Bytes& out, uint16_t value);
void put32(Bytes& out, uint32_t value);
void putBytes(Bytes& out, ByteView bytes);

/// Overwrites the field at `at`; does nothing when it does not lie inside `out`.
void set8(Bytes& out, size_t at, uint8_t value);
void set16(Bytes& out, size_t at, uint16_t value);
void set32(Bytes& out, size_t at, uint32_t value);
/// The field at `at`; 0 when it does not lie inside `bytes`.
uint8_t get8(ByteView bytes, size_t at);
uint16_t get16(ByteView bytes, size_t at);
uint32_t get32(ByteView bytes, size_t at);

/// Two lower-case hexadecimal digits a byte, at the end of `out`.
void appendHex(ByteView bytes, std::string* out);

}  // namespace sim

#endif
