#include "apps/simulator/faults/fault.h"

#include <gtest/gtest.h>

namespace {

using sim::Fault;
using sim::FaultKind;
using sim::FaultPlan;
using sim::FaultScope;
using sim::FaultTarget;

Fault parsed(const char* text) {
    Fault fault;
    QString problem;
    EXPECT_TRUE(parseFault(text, &fault, &problem)) << problem.toStdString();
    return fault;
}

TEST(ParseFault, TakesParametersCountsAndQualifiers) {
    const Fault plain = parsed("silence");
    EXPECT_EQ(FaultKind::silence, plain.kind);
    EXPECT_EQ(FaultScope::unit, plain.scope);
    EXPECT_EQ(1u, plain.from);
    EXPECT_EQ(0u, plain.times);
    EXPECT_EQ("", plain.tag);

    const Fault late = parsed("late:1500@10x3@tag=Counter");
    EXPECT_EQ(FaultKind::late, late.kind);
    EXPECT_EQ(1500, late.parameter);
    EXPECT_EQ(10u, late.from);
    EXPECT_EQ(3u, late.times);
    EXPECT_EQ("COUNTER", late.tag);
    EXPECT_EQ("late:1500@10x3@tag=Counter", late.text);

    const Fault torn = parsed("torn:7,20x2@on=write@5");
    EXPECT_EQ(7, torn.parameter);
    EXPECT_EQ(20, torn.parameter2);
    EXPECT_EQ(2u, torn.times);
    EXPECT_EQ(5u, torn.from);
    EXPECT_EQ(FaultScope::write, torn.scope);
}

TEST(ParseFault, ReadsCodesInHexadecimal) {
    EXPECT_EQ(0x0113, parsed("refuse-open:0113").parameter);
    EXPECT_EQ(0x0113, parsed("refuse-open:0x0113").parameter);
    EXPECT_EQ(2u, parsed("refuse-open:0x0113x2").times);
    EXPECT_EQ(0x0113, parsed("refuse-open:0x0113x2").parameter);
    EXPECT_EQ(0xFF, parsed("status:FF,2105").parameter);
    EXPECT_EQ(0x2105, parsed("status:FF,2105").parameter2);
    EXPECT_GT(0, parsed("status:05").parameter2);
}

TEST(ParseFault, HasDefaults) {
    const struct {
        const char* text;
        FaultKind kind;
        FaultScope scope;
        int64_t parameter;
    } rows[] = {
        {"torn", FaultKind::torn, FaultScope::unit, 1},
        {"torn-header", FaultKind::tornHeader, FaultScope::unit, 10},
        {"reset", FaultKind::reset, FaultScope::unit, 0},
        {"repeat", FaultKind::repeat, FaultScope::unit, 2},
        {"wrong-sequence", FaultKind::wrongSequence, FaultScope::unit, 1},
        {"encap-length-long", FaultKind::encapLengthLong, FaultScope::unit, 20},
        {"encap-length-short", FaultKind::encapLengthShort, FaultScope::unit, 4},
        {"item-count", FaultKind::itemCount, FaultScope::unit, 0},
        {"item-length-long", FaultKind::itemLengthLong, FaultScope::unit, 100},
        {"additional-status-size", FaultKind::additionalStatusSize, FaultScope::unit, 255},
        {"unknown-type", FaultKind::unknownType, FaultScope::read, 0xA0},
        {"string-length-past-end", FaultKind::stringLengthPastEnd, FaultScope::read, 255},
        {"short-reply", FaultKind::shortReply, FaultScope::unit, 1},
        {"refuse-register", FaultKind::refuseRegister, FaultScope::registerSession, 1},
        {"refuse-open", FaultKind::refuseOpen, FaultScope::open, 0x0113},
        {"short-open-reply", FaultKind::shortOpenReply, FaultScope::open, 4},
        {"pccc-status:F0", FaultKind::pcccStatus, FaultScope::pccc, 0xF0},
        {"wrong-transaction", FaultKind::wrongTransaction, FaultScope::pccc, 1},
        {"wrong-pccc-type", FaultKind::wrongPcccType, FaultScope::pccc, 0xFF},
    };
    for (const auto& row : rows) {
        const Fault fault = parsed(row.text);
        EXPECT_EQ(row.kind, fault.kind) << row.text;
        EXPECT_EQ(row.scope, fault.scope) << row.text;
        EXPECT_EQ(row.parameter, fault.parameter) << row.text;
    }
    for (const char* text : {"cut", "wrong-session", "wrong-command", "wrong-connection",
                             "wrong-service", "wrong-requestor", "wrong-pccc-command"}) {
        EXPECT_GT(0, parsed(text).parameter) << text;
    }
}

TEST(ParseFault, SaysWhatIsWrong) {
    for (const char* text : {"",
                             "sillence",
                             "silence:1",
                             "late",
                             "late:",
                             "late:x",
                             "late:-1",
                             "late:1,2",
                             "torn:1,2,3",
                             "truncate",
                             "status",
                             "encap-status",
                             "pccc-status",
                             "wrong-transaction:x",
                             "repeat:2@0",
                             "cut@x3",
                             "cut@tag=",
                             "cut@on=reads",
                             "cut@5y",
                             "late:15ab",
                             "late:99999999999",
                             "cut x3",
                             "refuse-open:01234567890"}) {
        Fault fault;
        QString problem;
        EXPECT_FALSE(parseFault(text, &fault, &problem)) << text;
        EXPECT_EQ(QString("fault '%1': ").arg(text).toStdString(),
                  problem.left(int(10 + std::string(text).size())).toStdString());
    }
}

TEST(FaultHelp, NamesEveryFault) {
    const std::string help = sim::faultHelp().toStdString();
    EXPECT_NE(std::string::npos, help.find("  silence "));
    EXPECT_NE(std::string::npos, help.find("  short-open-reply "));
}

/// How many of ten requests the plan strikes, as a row of digits.
std::string struck(FaultPlan& plan, const FaultTarget& target) {
    std::string text;
    std::vector<const Fault*> faults;
    for (int i = 0; i < 6; ++i) {
        plan.select(target, &faults);
        text += std::to_string(faults.size());
    }
    return text;
}

FaultTarget target(uint16_t command, int service, const std::string* tag = nullptr) {
    FaultTarget target;
    target.command = command;
    target.service = service;
    target.tag = tag;
    return target;
}

TEST(FaultPlan, StrikesFromTheNthRequestOn) {
    const struct {
        const char* text;
        const char* struck;
    } rows[] = {
        {"silence", "111111"},   {"silence@3", "001111"},   {"silence@3x2", "001100"},
        {"silencex2", "110000"}, {"silence@6x9", "000001"}, {"silence@7", "000000"},
    };
    for (const auto& row : rows) {
        FaultPlan plan;
        plan.add(parsed(row.text));
        EXPECT_EQ(row.struck, struck(plan, target(0x70, 0x4C))) << row.text;
    }
}

TEST(FaultPlan, StrikesItsScopeOnly) {
    const FaultTarget read = target(0x70, 0x4C);
    const FaultTarget write = target(0x70, 0x4D);
    const FaultTarget open = target(0x6F, 0x54);
    const FaultTarget close = target(0x6F, 0x4E);
    const FaultTarget registering = target(0x65, -1);
    FaultTarget pccc = target(0x70, 0x4B);
    pccc.pccc = true;
    const struct {
        const char* text;
        const char* struck;  // read, write, open, close, register, pccc
    } rows[] = {
        {"cut", "110001"},          {"cut@on=unit", "110001"},
        {"cut@on=rr", "001100"},    {"cut@on=read", "100000"},
        {"cut@on=write", "010000"}, {"cut@on=open", "001000"},
        {"cut@on=close", "000100"}, {"cut@on=register", "000010"},
        {"cut@on=any", "111111"},   {"refuse-register", "000010"},
        {"refuse-open", "001000"},  {"unknown-type", "100000"},
        {"cut@on=pccc", "000001"},  {"pccc-status:10", "000001"},
    };
    for (const auto& row : rows) {
        FaultPlan plan;
        plan.add(parsed(row.text));
        std::string text;
        for (const FaultTarget& one : {read, write, open, close, registering, pccc}) {
            std::vector<const Fault*> faults;
            plan.select(one, &faults);
            text += std::to_string(faults.size());
        }
        EXPECT_EQ(row.struck, text) << row.text;
    }
}

TEST(FaultPlan, CountsRequestsOfItsTagOnly) {
    const std::string counter = "COUNTER";
    const std::string other = "OTHER";
    FaultPlan plan;
    plan.add(parsed("silence@2x1@tag=counter"));
    EXPECT_EQ("000000", struck(plan, target(0x70, 0x4C, &other)));
    EXPECT_EQ("000000", struck(plan, target(0x70, 0x0A)));
    EXPECT_EQ("010000", struck(plan, target(0x70, 0x4C, &counter)));
}

TEST(FaultPlan, KeepsSeveralFaultsInTheirOrder) {
    FaultPlan plan;
    QString problem;
    EXPECT_TRUE(plan.empty());
    ASSERT_TRUE(plan.add("late:5", &problem));
    ASSERT_TRUE(plan.add("repeat@2", &problem));
    EXPECT_FALSE(plan.add("nonsense", &problem));
    EXPECT_EQ("122222", struck(plan, target(0x70, 0x4C)));
    std::vector<const Fault*> faults;
    plan.select(target(0x70, 0x4C), &faults);
    EXPECT_EQ("late:5", faults[0]->text);
    EXPECT_EQ("repeat@2", faults[1]->text);
    plan.clear();
    EXPECT_TRUE(plan.empty());
    EXPECT_EQ("000000", struck(plan, target(0x70, 0x4C)));
}

}  // namespace
