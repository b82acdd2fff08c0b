#include "apps/micro800/serve/live/event_list.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

Entry failure(int tag, const char* reason = "AB error: 0005H") {
    const QString address = QString("DINT0:T%1").arg(tag);
    return {tag, EntryKind::kFailure, address, QString("read %1> %2").arg(address, reason),
            QString()};
}

QStringList texts(const QVector<Entry>& entries) {
    QStringList found;
    for (const Entry& entry : entries) {
        found << entry.address + "|" + entry.text;
    }
    return found;
}

QStringList since(const EventList& list, quint64 period, bool whole = true) {
    QVector<Entry> found;
    EXPECT_EQ(list.since(period, &found), whole);
    return texts(found);
}

TEST(EventList, TellsWhatCameAfterAPeriod) {
    EventList list;
    list.add(failure(1));
    list.endPeriod(10);
    list.add(failure(2));
    list.endPeriod(11);
    EXPECT_EQ(since(list, 9).size(), 2);
    EXPECT_EQ(since(list, 10), QStringList{"DINT0:T2|read DINT0:T2> AB error: 0005H"});
    EXPECT_EQ(since(list, 11), QStringList());
    EXPECT_EQ(list.all().at(0).toObject().value("kind").toString(), QString("failure"));
}

TEST(EventList, ManyOfOneReasonAreOne) {
    EventList list;
    for (int i = 0; i < 500; ++i) {
        list.add(failure(i, "Connection refused(111)"));
    }
    list.add(failure(500));
    list.endPeriod(1);
    EXPECT_EQ(since(list, 0), (QStringList{"|Connection refused(111) (500 tags)",
                                           "DINT0:T500|read DINT0:T500> AB error: 0005H"}));
}

TEST(EventList, WritesAreToldOneByOne) {
    EventList list;
    for (int i = 0; i < 10; ++i) {
        list.add({i, EntryKind::kWrite, "DINT0:A", "1 -> 2: done", QString()});
    }
    list.endPeriod(1);
    EXPECT_EQ(since(list, 0).size(), 10);
}

TEST(EventList, KeepsTheLastOnesAndSaysWhenSomeAreGone) {
    EventList list;
    for (int i = 1; i <= EventList::kMost + 5; ++i) {
        list.add(failure(i));
        list.endPeriod(static_cast<quint64>(i));
    }
    EXPECT_EQ(list.all().size(), EventList::kMost);
    EXPECT_EQ(since(list, 4, false).size(), EventList::kMost);
    EXPECT_EQ(since(list, 5).size(), EventList::kMost);
    EXPECT_EQ(since(list, 6).size(), EventList::kMost - 1);
}

}  // namespace
