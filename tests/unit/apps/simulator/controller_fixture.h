#ifndef TESTS_UNIT_APPS_SIMULATOR_CONTROLLER_FIXTURE_H
#define TESTS_UNIT_APPS_SIMULATOR_CONTROLLER_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "apps/simulator/objects/controller.h"
#include "apps/simulator/pccc/data_table_text.h"
#include "apps/simulator/tags/tag_text.h"
#include "unit/apps/simulator/hex.h"

// Requests as on the wire; "S" marks four bytes for the session, "C" for the connection.

const char kRegister[] = "6500 0400 00000000 00000000 A1A2A3A4A5A6A7A8 00000000 0100 0000";
// Class 3, path to the message router, multiplier 2, RPI 2 s.
const char kOpen[] =
    "6F00 3E00 SSSSSSSS 00000000 0000000000000000 00000000"
    "00000000 0000 0200 0000 0000 B200 2E00"
    "54 02 20062401 05 F7 02000080 0100FE80 0200 1B50 44332211 02 000000"
    "80841E00 F843 80841E00 F843 A3 02 20022401";
const char kClose[] =
    "6F00 2600 SSSSSSSS 00000000 0000000000000000 00000000"
    "00000000 0000 0200 0000 0000 B200 1600"
    "4E 02 20062401 07 9A 0200 1B50 44332211 02 00 20022401";
// Read Tag of one element of A, sequence count 1.
const char kReadA[] =
    "7000 1E00 SSSSSSSS 00000000 0000000000000000 00000000"
    "00000000 0000 0200 A100 0400 CCCCCCCC B100 0A00 0100 4C 02 91014100 0100";
// Write Tag of the DINT 7 to A, sequence count 2.
const char kWriteA[] =
    "7000 2400 SSSSSSSS 00000000 0000000000000000 00000000"
    "00000000 0000 0200 A100 0400 CCCCCCCC B100 1000 0200 4D 02 91014100 C400 0100 07000000";

/// A controller without sockets and with a clock that the test moves.
class ControllerTest : public testing::Test {
 protected:
    /// Where the sequence count is in a message and in the answer to it.
    static constexpr size_t kSequenceAt = 24 + 6 + 2 + 4 + 4 + 4;

    ControllerTest() {
        settings.connections.limit = 2;
        session.owner = 1;
        session.address = 0x7F000001;
        session.port = 44818;
        files.putDefaultFiles();
        addTag("A:DINT=42");
        makeController();
    }

    void makeController() {
        controller = std::make_unique<sim::Controller>(settings, tags, files, faults,
                                                       [this] { return nowMs; });
    }

    void addTag(const char* text) {
        QString problem;
        EXPECT_TRUE(addTagFromText(text, tags, &problem)) << problem.toStdString();
    }

    void addFault(const char* text) {
        QString problem;
        EXPECT_TRUE(faults.add(text, &problem)) << problem.toStdString();
    }

    /// The bytes with the session handle and the connection id put in.
    sim::Bytes frame(std::string text) const {
        std::string plain;
        for (const char c : text) {
            plain += c == ' ' ? "" : std::string(1, c);
        }
        replace(&plain, "SSSSSSSS", session.handle);
        replace(&plain, "CCCCCCCC", connection);
        return hex(plain);
    }

    /// The reply in hexadecimal, empty for none. The bytes must stay as long as exchange is
    /// used. A message on a connection goes out with a sequence count that none had before, and
    /// comes back with that of the text.
    std::string serve(const std::string& text) {
        request = frame(text);
        if (!isConnectedMessage(request)) {
            return serveBytes(request);
        }
        const uint16_t given = sim::get16(request, kSequenceAt);
        countUp(&request);
        serveBytes(request);
        sim::Bytes reply = exchange.reply;
        if (reply.size() >= kSequenceAt + 2) {
            EXPECT_EQ(lastSequence, sim::get16(reply, kSequenceAt));
            sim::set16(reply, kSequenceAt, given);
        }
        return hexOf(reply);
    }

    static bool isConnectedMessage(const sim::Bytes& bytes) {
        return bytes.size() >= kSequenceAt + 2 && sim::get16(bytes, 0) == sim::kSendUnitData;
    }

    void countUp(sim::Bytes* bytes) { sim::set16(*bytes, kSequenceAt, ++lastSequence); }

    std::string serveBytes(const sim::Bytes& bytes) {
        controller->serve(session, bytes, exchange);
        return hexOf(exchange.reply);
    }

    void registerSession() {
        serve(kRegister);
        EXPECT_NE(0u, session.handle);
    }

    void openConnection() {
        registerSession();
        serve(kOpen);
        ASSERT_TRUE(exchange.status.ok());
        connection = sim::get32(exchange.reply, 44);
    }

    /// What a reply to a request of this session is expected to be.
    std::string expected(const std::string& text) const { return hexOf(frame(text)); }

    sim::ControllerSettings settings;
    sim::TagTable tags;
    sim::DataTable files;
    sim::FaultPlan faults;
    int64_t nowMs = 0;
    std::unique_ptr<sim::Controller> controller;
    sim::EncapSession session;
    sim::Exchange exchange;
    uint32_t connection = 0;
    uint16_t lastSequence = 0x8000;
    sim::Bytes request;  ///< what exchange looks into

 private:
    static void replace(std::string* text, const std::string& mark, uint32_t value) {
        sim::Bytes bytes;
        sim::put32(bytes, value);
        for (size_t at = text->find(mark); at != std::string::npos; at = text->find(mark)) {
            text->replace(at, mark.size(), hexOf(bytes));
        }
    }
};

#endif
