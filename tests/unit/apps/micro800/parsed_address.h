#ifndef TESTS_UNIT_APPS_MICRO800_PARSED_ADDRESS_H
#define TESTS_UNIT_APPS_MICRO800_PARSED_ADDRESS_H

#include <gtest/gtest.h>

#include "apps/micro800/format/address.h"

/// An address that is in order.
inline TagAddress parsed(const char* text) {
    TagAddress address;
    QString problem;
    EXPECT_TRUE(parseTagAddress(text, &address, &problem)) << qPrintable(problem);
    return address;
}

#endif
