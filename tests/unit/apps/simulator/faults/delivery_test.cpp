#include "apps/simulator/faults/delivery.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::AfterSegment;
using sim::Delivery;
using sim::Exchange;
using sim::Fault;

// The answer to a connected read of a DINT: the tests below name the place of each field.
const char kReadReply[] =
    "7000 2000 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500"
    "CC00 00 00 C400 2A000000";
const char kStringReply[] =
    "7000 1F00 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 A100 0400 0100FE80 B100 0B00 0500"
    "CC00 00 00 DA00 02 4F4B";
const char kOpenReply[] =
    "6F00 2E00 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 0000 0000 B200 1E00"
    "D400 00 00 01000010 0100FE80 0200 1B50 44332211 80841E00 80841E00 00 00";

const char kPcccReply[] =
    "6F00 2200 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 0000 0000 B200 1200"
    "CB00 00 00 07 0604 89674523 4F 00 3412 42 2A00";
const char kDhpReply[] =
    "7000 2400 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 A100 0400 0100FE80 B100 1000 0500"
    "0000 0300 0700 0800 4F 00 3412 2A00";

/// The bytes sent when these faults strike the reply.
class Delivering : public testing::Test {
 protected:
    void readReply(const char* bytes) {
        exchange.begin(sim::ByteView());
        exchange.reply = hex(bytes);
        exchange.service = sim::kReadTag;
        exchange.connected = true;
        exchange.dataItemAt = 24 + 6 + 2 + 8;
        exchange.cipAt = exchange.dataItemAt + 4 + 2;
    }

    void openReply() {
        exchange.begin(sim::ByteView());
        exchange.reply = hex(kOpenReply);
        exchange.service = sim::kForwardOpen;
        exchange.dataItemAt = 24 + 6 + 2 + 4;
        exchange.cipAt = exchange.dataItemAt + 4;
    }

    void pcccReply() {
        exchange.begin(sim::ByteView());
        exchange.reply = hex(kPcccReply);
        exchange.service = sim::kExecutePccc;
        exchange.dataItemAt = 24 + 6 + 2 + 4;
        exchange.cipAt = exchange.dataItemAt + 4;
        exchange.requestorAt = exchange.cipAt + 4;
        exchange.pcccAt = exchange.requestorAt + 7;
        exchange.hasPccc = true;
        exchange.pccc.function = sim::kTypedRead;
    }

    void dhpReply() {
        exchange.begin(sim::ByteView());
        exchange.reply = hex(kDhpReply);
        exchange.connected = true;
        exchange.dataItemAt = 24 + 6 + 2 + 8;
        exchange.pcccAt = exchange.dataItemAt + 4 + 2 + 8;
        exchange.hasPccc = true;
        exchange.pccc.function = sim::kThreeAddressRead;
    }

    void strike(std::initializer_list<const char*> texts) {
        faults.clear();
        exchange.faults.clear();
        for (const char* text : texts) {
            faults.push_back(std::make_unique<Fault>());
            QString problem;
            EXPECT_TRUE(parseFault(text, faults.back().get(), &problem)) << problem.toStdString();
            exchange.faults.push_back(faults.back().get());
        }
        applyFaults(exchange, &delivery);
    }

    /// All segments in a row.
    std::string sent() const {
        std::string text;
        for (const sim::Segment& segment : delivery.segments) {
            text += hexOf(segment.bytes);
        }
        return text;
    }

    Exchange exchange;
    std::vector<std::unique_ptr<Fault>> faults;
    Delivery delivery;
};

struct Row {
    const char* fault;
    const char* sent;
};

TEST_F(Delivering, DistortsFieldsOfAReadReply) {
    const Row rows[] = {
        {"wrong-command",
         "6F00 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"wrong-command:65",
         "6500 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"wrong-session",
         "7000 2000 02000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"encap-status:65", "7000 0000 01000000 65000000 0000000000000000 00000000"},
        {"encap-length-long",
         "7000 3400 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"encap-length-short",
         "7000 1C00 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"encap-length-short:99999",
         "7000 0000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"item-count",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0000 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"wrong-connection",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0200FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"item-length-long",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 7000 0500 CC00 00 00 C400 2A000000"},
        {"wrong-sequence",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0600 CC00 00 00 C400 2A000000"},
        {"wrong-service",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CD00 00 00 C400 2A000000"},
        {"wrong-service:8A",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 8A00 00 00 C400 2A000000"},
        {"additional-status-size",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 FF C400 2A000000"},
        {"unknown-type",
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 A000 2A000000"},
        {"string-length-past-end",  // not a string
         "7000 2000 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0500 CC00 00 00 C400 2A000000"},
        {"short-reply:2",
         "7000 1E00 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0A00 0500 CC00 00 00 C400 2A00"},
        {"short-reply:999",
         "7000 1600 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0200 0500"},
        {"truncate:5", "7000 2000 01"},
        {"silence", ""},
    };
    for (const Row& row : rows) {
        readReply(kReadReply);
        strike({row.fault});
        EXPECT_EQ(hexText(row.sent), sent()) << row.fault;
        for (const sim::Segment& segment : delivery.segments) {
            EXPECT_EQ(AfterSegment::keep, segment.after);
        }
    }
}

TEST_F(Delivering, DistortsTheLengthByteOfAString) {
    readReply(kStringReply);
    strike({"string-length-past-end"});
    std::string expected = hexText(kStringReply);
    expected.replace(expected.size() - 6, 2, "ff");
    EXPECT_EQ(expected, sent());
}

TEST_F(Delivering, LeavesARefusalItsTypeAndCannotShortenIt) {
    readReply(
        "7000 1A00 01000000 00000000 0000000000000000 00000000"
        "00000000 0000 0200 A100 0400 0100FE80 B100 0600 0500 CC00 05 00");
    exchange.status = sim::CipStatus(0x05);
    const std::string before = hexOf(exchange.reply);
    strike({"unknown-type", "string-length-past-end"});
    EXPECT_EQ(before, sent());
}

TEST_F(Delivering, ShortensAnOpenReply) {
    openReply();
    strike({"short-open-reply"});
    EXPECT_EQ(hexText("6F00 1800 01000000 00000000 0000000000000000 00000000"
                      "00000000 0000 0200 0000 0000 B200 0800 D400 00 00 01000010"),
              sent());
}

TEST_F(Delivering, CutsInTheMiddle) {
    readReply(kReadReply);
    const size_t size = exchange.reply.size();
    strike({"cut"});
    ASSERT_EQ(1u, delivery.segments.size());
    EXPECT_EQ(size / 2, delivery.segments[0].bytes.size());
    EXPECT_EQ(AfterSegment::close, delivery.segments[0].after);
    readReply(kReadReply);
    strike({"cut:30"});
    EXPECT_EQ(30u, delivery.segments[0].bytes.size());
    readReply(kReadReply);
    strike({"reset"});
    EXPECT_EQ(0u, delivery.segments[0].bytes.size());
    EXPECT_EQ(AfterSegment::reset, delivery.segments[0].after);
}

TEST_F(Delivering, TearsIntoSegments) {
    readReply(kReadReply);
    const size_t size = exchange.reply.size();
    strike({"torn"});
    ASSERT_EQ(size, delivery.segments.size());
    EXPECT_EQ(hexText(kReadReply), sent());
    EXPECT_EQ(0, delivery.segments[0].waitMs);
    EXPECT_EQ(1, delivery.segments[1].waitMs);

    readReply(kReadReply);
    strike({"torn:20,5"});
    ASSERT_EQ(3u, delivery.segments.size());
    EXPECT_EQ(20u, delivery.segments[1].bytes.size());
    EXPECT_EQ(size - 40, delivery.segments[2].bytes.size());
    EXPECT_EQ(5, delivery.segments[2].waitMs);
    EXPECT_EQ(hexText(kReadReply), sent());

    readReply(kReadReply);
    strike({"torn-header"});
    ASSERT_EQ(2u, delivery.segments.size());
    EXPECT_EQ(10u, delivery.segments[0].bytes.size());
    EXPECT_EQ(20, delivery.segments[1].waitMs);
    EXPECT_EQ(hexText(kReadReply), sent());

    readReply(kReadReply);
    strike({"torn-header:999"});
    EXPECT_EQ(hexText(kReadReply), sent());
}

TEST_F(Delivering, RepeatsAndHoldsBack) {
    readReply(kReadReply);
    strike({"repeat"});
    EXPECT_EQ(hexText(kReadReply) + hexText(kReadReply), sent());
    EXPECT_EQ(0, delivery.holdMs);
    readReply(kReadReply);
    strike({"repeat:3", "late:1500"});
    EXPECT_EQ(3u, delivery.segments.size());
    EXPECT_EQ(1500, delivery.holdMs);
    readReply(kReadReply);
    strike({"wrong-sequence", "repeat"});
    EXPECT_EQ(0, delivery.holdMs);
    EXPECT_EQ(2u, delivery.segments.size());
    EXPECT_EQ(delivery.segments[0].bytes, delivery.segments[1].bytes);
    EXPECT_EQ(6, delivery.segments[0].bytes[44]);
}

TEST_F(Delivering, LeavesAMissingAnswerMissing) {
    exchange.begin(sim::ByteView());
    strike({"repeat", "cut", "additional-status-size"});
    EXPECT_TRUE(delivery.segments.empty());
}

TEST_F(Delivering, LeavesPlacesAloneThatAReplyDoesNotHave) {
    // The answer to RegisterSession has neither items nor a service.
    exchange.begin(sim::ByteView());
    exchange.reply = hex("6500 0400 01000000 00000000 0000000000000000 00000000 0100 0000");
    strike({"item-count:9", "wrong-sequence", "additional-status-size", "wrong-connection"});
    EXPECT_EQ(hexText("6500 0400 01000000 00000000 0000000000000000 00000000 0100 0000"), sent());
}

TEST_F(Delivering, DistortsFieldsOfAPcccReply) {
    const std::string head =
        "6F00 2200 01000000 00000000 0000000000000000 00000000"
        "00000000 0000 0200 0000 0000 B200 1200 CB00 00 00";
    const Row rows[] = {
        {"wrong-requestor", "07 0604 8A674523 4F 00 3412 42 2A00"},
        {"wrong-requestor:01020304", "07 0604 04030201 4F 00 3412 42 2A00"},
        {"wrong-pccc-command", "07 0604 89674523 4E 00 3412 42 2A00"},
        {"wrong-pccc-command:0F", "07 0604 89674523 0F 00 3412 42 2A00"},
        {"wrong-transaction", "07 0604 89674523 4F 00 3512 42 2A00"},
        {"wrong-transaction:256", "07 0604 89674523 4F 00 3413 42 2A00"},
        {"wrong-pccc-type", "07 0604 89674523 4F 00 3412 FF 2A00"},
        {"wrong-pccc-type:22", "07 0604 89674523 4F 00 3412 22 2A00"},
    };
    for (const Row& row : rows) {
        pcccReply();
        strike({row.fault});
        EXPECT_EQ(hexText(head + row.sent), sent()) << row.fault;
    }
    pcccReply();
    exchange.pccc.function = sim::kThreeAddressRead;
    strike({"wrong-pccc-type"});
    EXPECT_EQ(hexText(kPcccReply), sent()) << "no typed read";
    pcccReply();
    exchange.pccc.status.sts = 0xF0;
    strike({"wrong-pccc-type"});
    EXPECT_EQ(hexText(kPcccReply), sent()) << "refused";
}

TEST_F(Delivering, DistortsFieldsOfAReplyThroughADhpProxy) {
    const Row rows[] = {
        {"wrong-requestor",
         "7000 2400 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 1000 0500"
         "0000 0300 0700 0800 4F 00 3412 2A00"},
        {"wrong-transaction",
         "7000 2400 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 1000 0500"
         "0000 0300 0700 0800 4F 00 3512 2A00"},
        {"short-reply:5",
         "7000 1F00 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0B00 0500"
         "0000 0300 0700 0800 4F"},
        {"short-reply:999",
         "7000 1600 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 0200 0500"},
        {"wrong-service",
         "7000 2400 01000000 00000000 0000000000000000 00000000"
         "00000000 0000 0200 A100 0400 0100FE80 B100 1000 0500"
         "0000 0300 0700 0800 4F 00 3412 2A00"},
    };
    for (const Row& row : rows) {
        dhpReply();
        strike({row.fault});
        EXPECT_EQ(hexText(row.sent), sent()) << row.fault;
    }
}

/// Any two faults on any reply leave something that can be sent; the sanitizers watch.
TEST_F(Delivering, SurvivesAllPairsOfFaults) {
    const char* const kinds[] = {"silence",
                                 "cut",
                                 "cut:999",
                                 "reset:3",
                                 "torn:7",
                                 "torn:0",
                                 "torn-header:99",
                                 "late:5",
                                 "repeat:0",
                                 "repeat:3",
                                 "truncate:0",
                                 "truncate:99999",
                                 "wrong-command",
                                 "wrong-session",
                                 "wrong-connection",
                                 "wrong-sequence",
                                 "wrong-service",
                                 "encap-status:1",
                                 "encap-length-long:70000",
                                 "encap-length-short:70000",
                                 "item-count:70000",
                                 "item-length-long:70000",
                                 "status:5",
                                 "additional-status-size",
                                 "unknown-type",
                                 "string-length-past-end",
                                 "short-reply:0",
                                 "short-reply:999",
                                 "pccc-status:F0",
                                 "wrong-requestor",
                                 "wrong-pccc-command",
                                 "wrong-transaction",
                                 "wrong-pccc-type",
                                 "refuse-register",
                                 "refuse-open",
                                 "short-open-reply:0",
                                 "short-open-reply:999"};
    for (const char* first : kinds) {
        for (const char* second : kinds) {
            readReply(kReadReply);
            strike({first, second});
            readReply(kStringReply);
            strike({first, second});
            openReply();
            strike({first, second});
            pcccReply();
            strike({first, second});
            dhpReply();
            strike({first, second});
            exchange.begin(sim::ByteView());
            exchange.reply = hex("9900 0000 00000000 01000000 0000000000000000 00000000");
            strike({first, second});
            EXPECT_GE(3u * 24, delivery.segments.size()) << first << second;
        }
    }
}

}  // namespace
