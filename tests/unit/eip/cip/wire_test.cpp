#include "eip/cip/wire.h"

#include <gtest/gtest.h>

#include "eip/cip/common_packet.h"
#include "eip/cip/encapsulation.h"
#include "eip/cip/message_router.h"
#include "eip/cip/pccc_data.h"
#include "unit/eip/cip/wire_bytes.h"

namespace {

// Records that are laid over what was received begin at any address.
static_assert(alignof(_Encap_Header) == 1, "an encapsulation header may begin at an odd address");
static_assert(alignof(_Eip_CPF) == 1, "a packet may begin at an odd address");
static_assert(alignof(_Eip_Item) == 1, "an item may begin at an odd address");
static_assert(alignof(_MR_Reply) == 1, "a reply may begin at an odd address");
static_assert(alignof(_PCCC_Reply) == 1, "a reply may begin at an odd address");

// Every byte has its highest bit set: a signed char would spread it over the bytes above.
const unsigned char kField[] = {0x81, 0x92, 0xA3, 0xF4};

TEST(Wire, FieldsAreReadAtEveryAddress) {
    for (size_t offset = 0; offset < 8; ++offset) {
        const Bytes data = filled(offset, 0x55) + Bytes(kField, kField + 4) + filled(1, 0x55);
        EXPECT_EQ(0x9281, cip::getUInt16(data.data() + offset)) << offset;
        EXPECT_EQ(0xF4A39281, cip::getUInt32(data.data() + offset)) << offset;
    }
}

TEST(Wire, FieldsAreWrittenAtEveryAddress) {
    for (size_t offset = 0; offset < 8; ++offset) {
        const Bytes before = filled(offset, 0x55);
        Bytes data = filled(offset + 5, 0x55);
        cip::putUInt16(data.data() + offset, 0x9281);
        EXPECT_EQ(before + bytes("81 92 55 55 55"), data) << offset;
        cip::putUInt32(data.data() + offset, 0xF4A39281);
        EXPECT_EQ(before + bytes("81 92 A3 F4 55"), data) << offset;
    }
}

TEST(Wire, ItemsAreReadAtOddAddresses) {
    const Bytes packet = bytes("55 | A1 80 FE FF");
    const _Eip_Item* item = reinterpret_cast<const _Eip_Item*>(packet.data() + 1);
    EXPECT_EQ(0x80A1, _GetItemType(item));
    EXPECT_EQ(0xFFFE, _GetItemLength(item));
}

}  // namespace
