#include "apps/micro800/serve/http/request_target.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(RequestTarget, RefusesWhatIsBroken) {
    const QByteArray texts[] = {"",          "api",       "http://a/", "/%",    "/%4",
                                "/%4g",      "/?a=%",     "/?a=%zz",   "/%ff",  "/?a=%c3",
                                "/?a=1&a=2", "/?%61=&a=", "*",         "/a\xff"};
    for (const QByteArray& text : texts) {
        RequestTarget target;
        EXPECT_FALSE(parseRequestTarget(text, &target)) << text.constData();
    }
}

TEST(RequestTarget, DecodesPathAndQuery) {
    RequestTarget target;
    ASSERT_TRUE(
        parseRequestTarget("/api/history?tag=INT0%3AGRID%5B2%2c3%5D&&points=10&flag", &target));
    EXPECT_EQ(target.path, QString("/api/history"));
    EXPECT_EQ(target.query.value("tag"), QString("INT0:GRID[2,3]"));
    EXPECT_EQ(target.query.value("points"), QString("10"));
    EXPECT_TRUE(target.query.contains("flag"));
    EXPECT_EQ(target.query.size(), 3);
}

TEST(RequestTarget, APlusIsABlankInTheQueryOnly) {
    RequestTarget target;
    ASSERT_TRUE(parseRequestTarget("/a+b?c=d+e%2b", &target));
    EXPECT_EQ(target.path, QString("/a+b"));
    EXPECT_EQ(target.query.value("c"), QString("d e+"));
}

}  // namespace
