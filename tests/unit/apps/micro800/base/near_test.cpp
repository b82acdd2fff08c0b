#include "apps/micro800/base/near.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(TypingDistance, CountsWhatHasToBeDone) {
    EXPECT_EQ(typingDistance("read", "read"), 0);
    EXPECT_EQ(typingDistance("", "read"), 4);
    EXPECT_EQ(typingDistance("read", ""), 4);
    EXPECT_EQ(typingDistance("raed", "read"), 1);
    EXPECT_EQ(typingDistance("reed", "read"), 1);
    EXPECT_EQ(typingDistance("rad", "read"), 1);
    EXPECT_EQ(typingDistance("reaad", "read"), 1);
    EXPECT_EQ(typingDistance("write", "read"), 4);
}

TEST(NearestOf, WhatWasProbablyMeant) {
    const QStringList known{"read", "write", "watch", "identify", "info"};
    EXPECT_EQ(nearestOf("reed", known), QString("read"));
    EXPECT_EQ(nearestOf("WRITE", known), QString("write"));
    EXPECT_EQ(nearestOf("wacth", known), QString("watch"));
    EXPECT_EQ(nearestOf("indentfy", known), QString("identify"));
    EXPECT_EQ(nearestOf("ident", known), QString("identify"));
    EXPECT_EQ(nearestOf("x", known), QString());
    EXPECT_EQ(nearestOf("", known), QString());
    EXPECT_EQ(nearestOf("compile", known), QString());
}

TEST(SuggestionFor, IsTheEndOfASentence) {
    EXPECT_EQ(suggestionFor("jsno", {"json"}, "--"), QString("; did you mean --json?"));
    EXPECT_EQ(suggestionFor("verbose", {"json"}, "--"), QString());
}

}  // namespace
