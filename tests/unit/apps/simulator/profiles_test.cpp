#include "apps/simulator/profiles.h"

#include "unit/apps/simulator/controller_fixture.h"

namespace {

class Profiles : public ControllerTest {
 protected:
    void become(const char* profile) {
        EXPECT_TRUE(sim::applyProfile(profile, &settings));
        addTag("ON:BOOL=1");
        addTag("LATE:INT[1..4]");
        makeController();
        registerSession();
    }

    /// The message-router reply to an unconnected request.
    std::string answer(const std::string& cip) {
        sim::Bytes length;
        sim::put16(length, uint16_t(hex(cip).size()));
        serve(
            "6F00 0000 SSSSSSSS 00000000 0000000000000000 00000000"
            "00000000 0000 0200 0000 0000 B200 " +
            hexOf(length) + cip);
        return hexOf(sim::ByteView(exchange.reply).from(40));
    }

    std::string tagList() { return answer("55 02 206B2400 0100 0100"); }
};

const char kUnknownTag[] = "4C 03 91034E4F4E00 0100";
const char kOn[] = "4C 02 91024F4E 0100";
const char kIdentity[] = "01 02 20012401";

TEST_F(Profiles, OfEarlyFirmwareHaveNoNames) {
    become("early");
    EXPECT_EQ("cc000800", answer(kOn));
    EXPECT_EQ("cc000800", answer(kUnknownTag));
    EXPECT_EQ("cd000800", answer("4D 02 91024F4E C100 0100 00"));
    EXPECT_EQ("d2000800", answer("52 02 91024F4E 0100 00000000"));
    EXPECT_EQ("d5000500", tagList());
    EXPECT_EQ("cb000500", answer("4B 02 206B2400"));
    EXPECT_EQ(hexText("CB 00 00 00 07 0604 89674523 4F 00 3412 42 0000"),
              answer("4B 02 20672401 07 0604 89674523 0F 00 3412 68 0000 0100 06 07 00 0100"));
}

TEST_F(Profiles, OfOlderFirmwareAnswerTheirWay) {
    become("older");
    EXPECT_EQ("cc000400", answer(kUnknownTag));
    EXPECT_EQ("cc000000c100ff", answer(kOn));
    EXPECT_EQ(hexText("D5000000 01000000 0100 41 02000000 0200 4F4E"), tagList());
}

TEST_F(Profiles, OfNewerFirmwareAnswerTheirWay) {
    become("newer");
    EXPECT_EQ("cc000500", answer(kUnknownTag));
    EXPECT_EQ("cc000000c10001", answer(kOn));
    EXPECT_EQ(hexText("D5000000 01000000 0100 41 02000000 0200 4F4E"), tagList());
    EXPECT_EQ(hexText("81000000 0100 0E00 0301 0C 0B 3400 DEC08060"
                      "10 323038302D4C4335302D343851574253"),
              answer(kIdentity));
    EXPECT_EQ("8e00000002", answer("0E 03 20012401 3008"));
}

TEST_F(Profiles, AreKnownByName) {
    const sim::ControllerSettings before;
    EXPECT_EQ("early, older, newer", sim::profileNames().toStdString());
    EXPECT_FALSE(sim::applyProfile("Newer", &settings));
    EXPECT_FALSE(sim::applyProfile("", &settings));
    EXPECT_EQ(before.tags.unknownTagStatus, settings.tags.unknownTagStatus);
}

}  // namespace
