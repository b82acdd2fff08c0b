#ifndef TESTS_UNIT_APPS_MICRO800_POLLING_LISTED_H
#define TESTS_UNIT_APPS_MICRO800_POLLING_LISTED_H

#include <gtest/gtest.h>

#include <QStringList>

#include "apps/micro800/format/address_list.h"

/// Addresses that are in order.
inline QVector<ListedAddress> listed(const QStringList& texts) {
    QVector<ListedAddress> addresses;
    for (const QString& text : texts) {
        ListedAddress address;
        QString problem;
        EXPECT_TRUE(parseListedAddress({text, QString()}, &address, &problem))
            << qPrintable(problem);
        addresses.append(address);
    }
    return addresses;
}

#endif
