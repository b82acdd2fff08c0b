#include "eip/record/record_ring.h"

#include <gtest/gtest.h>

#include <string>

namespace {

typedef std::vector<unsigned char> Bytes;

/// The contents of a copy, a text for each record.
std::vector<std::string> recordsOf(const RecordRing& ring) {
    Bytes copy;
    copy.reserve(ring.copySize());
    const unsigned char* const before = copy.data();
    ring.copyTo(&copy);
    EXPECT_EQ(before, copy.data()) << "the copy outgrew copySize()";
    std::vector<std::string> texts;
    size_t at = 0;
    RecordView record;
    while (nextRecord(copy.data(), copy.size(), &at, &record)) {
        texts.push_back(std::string(reinterpret_cast<const char*>(record.data), record.head.size));
    }
    EXPECT_EQ(copy.size(), at);
    return texts;
}

void append(RecordRing* ring, RecordKind kind, const std::string& text, uint16_t connection = 1) {
    const RecordTime time = {1000, 10};
    ring->append(kind, connection, time, text.data(), text.size());
}

/// A message that begins with this encapsulation command.
std::string message(int command, const std::string& rest) {
    return std::string(1, char(command)) + std::string(1, '\0') + rest;
}

std::vector<std::string> texts(std::initializer_list<std::string> list) {
    return list;
}

TEST(RecordRing, Empty) {
    EXPECT_EQ(texts({}), recordsOf(RecordRing(1000, 10)));
}

/// What goes first may be a part of a message that came without its command.
TEST(RecordRing, DropsAMessageOfOneByte) {
    RecordRing ring(1000, 2);
    append(&ring, kRecordReceived, "x");
    append(&ring, kRecordReceived, "y");
    append(&ring, kRecordReceived, "z");
    EXPECT_EQ(texts({"x", "overwritten: 1 older messages", "y", "z"}), recordsOf(ring));
}

TEST(NextRecord, IsNotLookedForBehindTheEnd) {
    const unsigned char bytes[4] = {0};
    size_t at = 5;
    RecordView record;
    EXPECT_FALSE(nextRecord(bytes, sizeof bytes, &at, &record));
    EXPECT_EQ(5u, at);
}

TEST(RecordRing, KeepsOrderAndHeads) {
    RecordRing ring(1000, 10);
    const RecordTime time = {1234567, 89};
    ring.append(kRecordReceived, 7, time, "abc", 3);
    Bytes copy;
    ring.copyTo(&copy);
    size_t at = 0;
    RecordView record;
    ASSERT_TRUE(nextRecord(copy.data(), copy.size(), &at, &record));
    EXPECT_EQ(1234567, record.head.time.wall);
    EXPECT_EQ(89, record.head.time.monotonic);
    EXPECT_EQ(kRecordReceived, record.head.kind);
    EXPECT_EQ(7, record.head.connection);
    EXPECT_EQ(3u, record.head.size);
    EXPECT_FALSE(nextRecord(copy.data(), copy.size(), &at, &record));
}

TEST(RecordRing, OldestMessagesMakeRoom) {
    RecordRing ring(10000, 3);
    for (const char* text : {"a", "b", "c", "d"}) {
        append(&ring, kRecordSent, message(0x70, text));
    }
    EXPECT_EQ(texts({"overwritten: 1 older messages", message(0x70, "b"), message(0x70, "c"),
                     message(0x70, "d")}),
              recordsOf(ring));
    EXPECT_EQ(3u, ring.messages());
}

TEST(RecordRing, EventsHaveALimitOfTheirOwn) {
    RecordRing ring(10000, 2);
    append(&ring, kRecordSent, message(0x70, "m"));
    append(&ring, kRecordEvent, "1");
    append(&ring, kRecordEvent, "2");
    EXPECT_EQ(3u, recordsOf(ring).size());
    append(&ring, kRecordEvent, "3");
    EXPECT_EQ(texts({"overwritten: 1 older messages", "2", "3"}), recordsOf(ring));
    EXPECT_EQ(2u, ring.events());
    EXPECT_EQ(0u, ring.messages());
}

/// Any number of bytes, so that records lie across the end of the memory in all ways.
TEST(RecordRing, BytesMakeRoomAndLieAcrossTheEnd) {
    for (size_t bytes = 100; bytes < 160; ++bytes) {
        RecordRing ring(bytes, 1000);
        std::vector<std::string> all;
        for (int i = 0; i < 50; ++i) {
            all.push_back("event" + std::to_string(i) + std::string(size_t(i % 7), '.'));
            append(&ring, kRecordEvent, all.back());
            const std::vector<std::string> kept = recordsOf(ring);
            ASSERT_LE(kept.size(), all.size());
            ASSERT_GE(kept.size(), 2u - (i == 0));
            EXPECT_TRUE(std::equal(kept.rbegin(), kept.rend(), all.rbegin()));
        }
    }
}

TEST(RecordRing, LongerThanTheRingIsCut) {
    RecordRing ring(200, 10);
    append(&ring, kRecordEvent, std::string(500, 'x'));
    ASSERT_EQ(1u, recordsOf(ring).size());
    EXPECT_EQ(200 - sizeof(RecordHead), recordsOf(ring).at(0).size());
}

/// RegisterSession 65, SendRRData 6F (Forward Open), SendUnitData 70.
TEST(RecordRing, TheOpeningOfTheConnectionStays) {
    RecordRing ring(100000, 2);
    append(&ring, kRecordConnecting, "connect");
    append(&ring, kRecordConnected, "connected");
    append(&ring, kRecordSent, message(0x65, "register"));
    append(&ring, kRecordReceived, message(0x65, "registered"));
    append(&ring, kRecordSent, message(0x6F, "open"));
    append(&ring, kRecordReceived, message(0x6F, "opened"));
    append(&ring, kRecordEvent, "event");
    append(&ring, kRecordEvent, "another");
    for (int i = 0; i < 5; ++i) {
        append(&ring, kRecordSent, message(0x70, std::to_string(i)));
    }
    EXPECT_EQ(texts({"connect", "connected", message(0x65, "register"), message(0x65, "registered"),
                     message(0x6F, "open"), message(0x6F, "opened"),
                     "overwritten: 7 older messages", message(0x70, "3"), message(0x70, "4")}),
              recordsOf(ring));
}

TEST(RecordRing, TheOpeningOfAnEarlierConnectionGoes) {
    RecordRing ring(100000, 2);
    append(&ring, kRecordConnecting, "connect 1");
    append(&ring, kRecordSent, message(0x65, "register 1"));
    append(&ring, kRecordClosed, "closed 1");
    append(&ring, kRecordConnecting, "connect 2", 2);
    append(&ring, kRecordSent, message(0x65, "register 2"), 2);
    append(&ring, kRecordEvent, "event");
    append(&ring, kRecordEvent, "another");
    for (int i = 0; i < 3; ++i) {
        append(&ring, kRecordSent, message(0x70, std::to_string(i)), 2);
    }
    EXPECT_EQ(texts({"connect 2", message(0x65, "register 2"), "overwritten: 3 older messages",
                     message(0x70, "1"), message(0x70, "2")}),
              recordsOf(ring));
}

TEST(RecordRing, WhatIsKeptOfAnOpeningHasALimit) {
    RecordRing ring(100000, 1);
    append(&ring, kRecordConnecting, "connect");
    for (int i = 0; i < 1000; ++i) {
        append(&ring, kRecordSent, message(0x65, std::string(size_t(400 + i % 200), 'x')));
    }
    EXPECT_LE(recordsOf(ring).size(), 12u);
}

TEST(NextRecord, WhatIsNotWholeIsNone) {
    RecordRing ring(1000, 10);
    append(&ring, kRecordEvent, "abc");
    Bytes copy;
    ring.copyTo(&copy);
    for (size_t size = 0; size < copy.size(); ++size) {
        size_t at = 0;
        RecordView record;
        EXPECT_FALSE(nextRecord(copy.data(), size, &at, &record)) << size;
        EXPECT_EQ(0u, at);
    }
    size_t at = 0;
    RecordView record;
    EXPECT_TRUE(nextRecord(copy.data(), copy.size(), &at, &record));
    EXPECT_EQ(copy.size(), at);
}

}  // namespace
