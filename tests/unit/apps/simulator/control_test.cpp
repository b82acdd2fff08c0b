#include "apps/simulator/control.h"

#include <gtest/gtest.h>

#include "apps/simulator/tags/tag_text.h"

namespace {

/// A server that listens on a port of its own, and what commands do to it.
class ControlTest : public testing::Test {
 protected:
    ControlTest()
        : controller(sim::ControllerSettings(), tags, files, faults, [] { return int64_t(0); }),
          server(controller, log) {
        QString problem;
        EXPECT_TRUE(server.start(QHostAddress(QHostAddress::LocalHost), 0, &problem))
            << problem.toStdString();
        EXPECT_TRUE(addTagFromText("A:DINT[3]=1,2,3", tags, &problem));
        EXPECT_TRUE(addTagFromText("S:STRING=a b", tags, &problem));
    }

    std::string run(const char* line) {
        const sim::ControlTargets targets = {&tags, &files, &faults, &controller, &server};
        return runCommand(line, targets, &quit).toStdString();
    }

    sim::TagTable tags;
    sim::DataTable files;
    sim::FaultPlan faults;
    sim::RequestLog log;
    sim::Controller controller;
    sim::Server server;
    bool quit = false;
};

TEST_F(ControlTest, SetsAndGetsValues) {
    EXPECT_EQ("ok 1,2,3", run("get A"));
    EXPECT_EQ("ok", run("set a[1]=7,8"));
    EXPECT_EQ("ok 8", run(" get A[2] "));
    EXPECT_EQ("error: 2 values for 1 elements", run("set S=x,y"));
    EXPECT_EQ("ok", run("set S=\"x  y, z\""));
    EXPECT_EQ("ok \"x  y, z\"", run("get S"));
    EXPECT_EQ("error: there is no 'B'", run("get B"));
    EXPECT_EQ("error: NAME=values is wanted", run("set A"));
}

TEST_F(ControlTest, SetsAndGetsTheDataTable) {
    files.putDefaultFiles();
    EXPECT_EQ("ok", run("set N7:300=5,6"));
    EXPECT_EQ("ok 6", run("get n7:301"));
    EXPECT_EQ("error: there is no 'N9:0'", run("get N9:0"));
    EXPECT_EQ("error: there is no 'N9:0'", run("set N9:0=1"));
}

TEST_F(ControlTest, SwitchesFaults) {
    EXPECT_EQ("ok", run("fault late:5x1"));
    EXPECT_EQ("ok", run("fault repeat"));
    EXPECT_FALSE(faults.empty());
    EXPECT_EQ("error: fault 'nonsense': there is no fault 'nonsense'", run("fault nonsense"));
    EXPECT_EQ("ok", run("fault none"));
    EXPECT_TRUE(faults.empty());
}

TEST_F(ControlTest, TakesTheControllerDownAndUpOnTheSamePort) {
    const quint16 port = server.port();
    EXPECT_EQ("ok", run("down"));
    EXPECT_EQ("ok", run("down"));
    EXPECT_EQ("ok", run("up"));
    EXPECT_EQ("ok", run("up"));
    EXPECT_EQ(port, server.port());
}

TEST_F(ControlTest, KnowsTheOtherCommands) {
    for (const char* line : {"drop-connections", "close-peers", "reset-peers", "delay 0"}) {
        EXPECT_EQ("ok", run(line)) << line;
        EXPECT_FALSE(quit);
    }
    EXPECT_EQ("error: 'soon' is no delay in milliseconds", run("delay soon"));
    EXPECT_EQ("error: there is no command ''", run(""));
    EXPECT_EQ("error: there is no command 'nonsense 1'", run("nonsense 1"));
    EXPECT_EQ("ok", run("quit"));
    EXPECT_TRUE(quit);
}

}  // namespace
