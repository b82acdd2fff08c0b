#include "apps/micro800/controller/check/tag_check.h"

#include <gtest/gtest.h>

#include <QMap>
#include <QStringList>

#include "unit/apps/micro800/qt_printers.h"

namespace {

const int kDint = 0xC4;
const int kInt = 0xC3;
const int kReal = 0xCA;
const int kTime = 0xDB;
const int kString = 0xDA;

TagReply refused(int status, int extended = 0) {
    TagReply reply;
    reply.kind = TagReply::Kind::kRefused;
    reply.status = status;
    reply.extended = extended;
    reply.error = "AB error";
    reply.requests = 1;
    return reply;
}

/// A controller of one-element answers, and what it was asked.
class FakeController {
 public:
    struct Tag {
        int type;
        QVector<ArrayDeclaration::Range> ranges;
        int size = 4;
    };
    QMap<QString, Tag> tags;
    int largestReply = 490;
    QStringList asked;

    TagReply read(const QByteArray& path, int count) {
        asked << QString("%1 %2").arg(QString(path)).arg(count);
        const QString name = QString(path).section('[', 0, 0);
        if (!tags.contains(name)) {
            return refused(0x05);
        }
        const Tag tag = tags.value(name);
        const QString inside = QString(path).section('[', 1).section(']', 0, 0);
        const QStringList indexes = inside.split(',', Qt::SkipEmptyParts);
        if (!indexes.isEmpty() && indexes.size() != tag.ranges.size()) {
            return refused(0x04);
        }
        for (int i = 0; i < indexes.size(); ++i) {
            const int index = indexes.at(i).toInt();
            if (index < tag.ranges.at(i).lower || index > tag.ranges.at(i).upper) {
                return refused(0xFF, 0x2105);
            }
        }
        if (tag.size * count > largestReply) {
            return refused(0x11);
        }
        TagReply reply;
        reply.kind = TagReply::Kind::kValue;
        reply.type = tag.type;
        reply.data = QByteArray(tag.size * count, 'x');
        reply.microseconds = 6000;
        reply.requests = 1;
        return reply;
    }
};

class TagCheckTest : public testing::Test {
 protected:
    TagCheckTest() {
        controller.tags["COUNTER"] = {kDint, {}};
        controller.tags["LEVEL"] = {kReal, {}};
        controller.tags["DELAY"] = {kTime, {}};
        controller.tags["NAMES"] = {kString, {{0, 2}}};
        controller.tags["ARR"] = {kDint, {{0, 9}}};
        controller.tags["GRID"] = {kInt, {{2, 4}, {0, 5}}, 2};
        controller.tags["HUGE"] = {kDint, {{0, 999}}};
    }

    static ListedAddress listed(const char* text) {
        ListedAddress address;
        QString problem;
        EXPECT_TRUE(parseListedAddress({text, QString()}, &address, &problem)) << text;
        return address;
    }
    TagCheck check(const char* text) {
        controller.asked.clear();
        return TagChecker([this](const QByteArray& name,
                                 int count) { return controller.read(name, count); },
                          declared)
            .check(listed(text));
    }
    /// "VERDICT: DETAIL"
    QString verdictOf(const char* text) {
        const TagCheck result = check(text);
        EXPECT_EQ(result.requests, controller.asked.size());
        return verdictKey(result.verdict) + ": " + result.detail;
    }

    FakeController controller;
    QVector<ListedAddress> declared;
};

TEST_F(TagCheckTest, WhatIsInOrderTakesOneRequest) {
    const TagCheck scalar = check("DINT0:Counter");
    EXPECT_EQ(scalar.verdict, Verdict::kOk);
    EXPECT_EQ(scalar.controllerType, QString("DINT"));
    EXPECT_EQ(scalar.readRequests, 1);
    EXPECT_EQ(scalar.readMs, 6.0);
    EXPECT_EQ(controller.asked, QStringList("COUNTER 1"));
    EXPECT_EQ(verdictOf("DINT0:ARR[9]"), QString("ok: "));
    EXPECT_EQ(controller.asked, QStringList("ARR[9] 1"));
}

TEST_F(TagCheckTest, Types) {
    EXPECT_EQ(verdictOf("DINT0:LEVEL"),
              QString("wrong_type: the controller has REAL; write REAL0:LEVEL"));
    EXPECT_EQ(
        verdictOf("DINT0:DELAY"),
        QString("wrong_type: the controller has TIME, for which there is no prefix: the panel "
                "cannot read it"));
    EXPECT_EQ(verdictOf("UDINT0:ARR[0..9]"),
              QString("wrong_type: the controller has DINT; write DINT0:ARR[0..9]"));
    EXPECT_EQ(controller.asked, QStringList("ARR[0] 1"));
    EXPECT_EQ(check("DINT0:LEVEL").readRequests, 0);
}

TEST_F(TagCheckTest, WhatIsNotThere) {
    const char* missing = "missing: the controller has no global variable of that name";
    EXPECT_EQ(verdictOf("DINT0:NOPE"), QString(missing));
    EXPECT_EQ(controller.asked.size(), 1);
    EXPECT_EQ(verdictOf("DINT0:NOPE[1]"), QString(missing));
    EXPECT_EQ(controller.asked, QStringList({"NOPE[1] 1", "NOPE 1"}));
    EXPECT_EQ(verdictOf("DINT0:NOPE[0..9]"), QString(missing));
    EXPECT_EQ(verdictOf("DINT0:ARR[10]"),
              QString("no_element: the index is outside the controller's array"));
    EXPECT_EQ(verdictOf("INT0:GRID[2]"),
              QString("no_element: the controller has GRID, but no array with so many dimensions"));
    EXPECT_EQ(verdictOf("DINT0:COUNTER[0..3]"),
              QString("no_element: the controller has COUNTER, but no array with so many "
                      "dimensions"));
}

TEST_F(TagCheckTest, AnArrayIsReadAtItsEndsBesideThemAndWhole) {
    EXPECT_EQ(verdictOf("DINT0:arr[0..9]"), QString("ok: "));
    EXPECT_EQ(controller.asked, QStringList({"ARR[0] 1", "ARR[9] 1", "ARR 10", "ARR[10] 1"}));
    EXPECT_EQ(verdictOf("INT0:GRID[2..4,0..5]"), QString("ok: "));
    EXPECT_EQ(controller.asked, QStringList({"GRID[2,0] 1", "GRID[4,5] 1", "GRID 18", "GRID[1,0] 1",
                                             "GRID[5,0] 1", "GRID[2,6] 1"}));
    EXPECT_EQ(check("DINT0:ARR[0..9]").readRequests, 1);
}

TEST_F(TagCheckTest, ADeclarationThatIsTooLong) {
    EXPECT_EQ(verdictOf("DINT0:ARR[0..49]"),
              QString("too_long: the controller's array ends at [9]; declare DINT0:ARR[0..9]"));
    EXPECT_EQ(verdictOf("DINT0:ARR[0..10]"),
              QString("too_long: the controller's array ends at [9]; declare DINT0:ARR[0..9]"));
    EXPECT_EQ(verdictOf("INT0:GRID[2..9,0..7]"),
              QString("too_long: the controller's array ends at [4,5]; declare "
                      "INT0:GRID[2..4,0..5]"));
    // By halves: not one request an element.
    check("DINT0:ARR[0..60000]");
    EXPECT_LE(controller.asked.size(), 2 + 16);
}

TEST_F(TagCheckTest, ADeclarationThatIsTooShort) {
    EXPECT_EQ(verdictOf("DINT0:ARR[0..4]"),
              QString("too_short: the controller has ARR[5] as well; declare the bounds that it "
                      "has"));
    EXPECT_EQ(verdictOf("DINT0:ARR[1..9]"),
              QString("too_short: the controller has ARR[0] as well; declare the bounds that it "
                      "has, or the panel shows other elements"));
    EXPECT_EQ(verdictOf("INT0:GRID[2..4,0..3]"),
              QString("too_short: the controller has GRID[2,4] as well; declare the bounds that it "
                      "has, or the panel shows other elements"));
}

TEST_F(TagCheckTest, AnArrayThatIsNotReadWhole) {
    EXPECT_TRUE(verdictOf("DINT0:HUGE[0..999]")
                    .startsWith("too_large: the controller refuses its 4000 bytes as a whole "
                                "(AB error), "));
    EXPECT_EQ(check("DINT0:HUGE[0..999]").readRequests, 0);
}

TEST_F(TagCheckTest, StringsAreReadOneByOne) {
    const TagCheck result = check("STRING0:NAMES[0..2]");
    EXPECT_EQ(result.verdict, Verdict::kOk);
    EXPECT_EQ(result.readRequests, 3);
    EXPECT_EQ(controller.asked, QStringList({"NAMES[0] 1", "NAMES[2] 1", "NAMES[3] 1"}));
}

TEST_F(TagCheckTest, AnElementHasToLieWithinTheDeclaration) {
    declared = {listed("DINT0:ARR[0..2]"), listed("DINT0:ARR[0..4]")};  // the last one counts
    EXPECT_EQ(verdictOf("DINT0:ARR[4]"), QString("ok: "));
    EXPECT_EQ(verdictOf("DINT0:ARR[5]"),
              QString("no_element: the project declares DINT0:ARR[0..4], and the panel would read "
                      "something else"));
    EXPECT_EQ(verdictOf("DINT0:COUNTER"), QString("ok: "));
}

TEST_F(TagCheckTest, OtherRefusalsAndNoReply) {
    const TagChecker busy([](const QByteArray&, int) { return refused(0x02); }, {});
    const TagCheck refusal = busy.check(listed("DINT0:A"));
    EXPECT_EQ(refusal.verdict, Verdict::kRefused);
    EXPECT_EQ(refusal.detail, QString("AB error"));
    TagReply none;
    none.error = "Internal: receive timeout";
    none.requests = 1;
    const TagChecker silent([&none](const QByteArray&, int) { return none; }, {});
    for (const char* text : {"DINT0:A", "DINT0:A[1]", "DINT0:A[0..3]"}) {
        const TagCheck result = silent.check(listed(text));
        EXPECT_EQ(result.verdict, Verdict::kNoReply);
        EXPECT_EQ(result.detail, none.error);
        EXPECT_EQ(result.requests, 1);
    }
}

/// Silence in the middle of an array is no verdict about its bounds.
TEST_F(TagCheckTest, NoReplyOnTheWay) {
    const int needed = 4;
    for (int good = 0; good < needed; ++good) {
        int asked = 0;
        const TagChecker checker(
            [&](const QByteArray& name, int count) {
                return asked++ < good ? controller.read(name, count) : TagReply();
            },
            {});
        EXPECT_EQ(checker.check(listed("DINT0:ARR[0..9]")).verdict, Verdict::kNoReply) << good;
    }
}

}  // namespace
