#include "common/project_database.h"

#include <gtest/gtest.h>

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QTemporaryDir>

namespace {

const char kConnection[] = "project_database_test";

/// A project file with two links on port 2000 and one each on 1002 and 1003.
const char* const kProject[] = {
    "CREATE TABLE LINK (LINKID INTEGER, HMIPORT INTEGER)",
    "CREATE TABLE NODE (LINKID INTEGER, STATIONID INTEGER, IP TEXT, PORT INT, ISDEFAULT INT)",
    "INSERT INTO LINK VALUES (1, 2000)",
    "INSERT INTO LINK VALUES (2, 2000)",
    "INSERT INTO LINK VALUES (3, 1002)",
    "INSERT INTO LINK VALUES (4, 1003)",
    "INSERT INTO NODE VALUES (1, 7, '192.168.1.10', 44818, 0)",
    "INSERT INTO NODE VALUES (1, 8, '192.168.1.10', 44818, 1)",
    "INSERT INTO NODE VALUES (2, 9, '192.168.1.11', 44818, 1)",
    "INSERT INTO NODE VALUES (2, 10, '192.168.1.11', 44818, 1)",
    "INSERT INTO NODE VALUES (3, 258, '', 0, 1)",
    "INSERT INTO NODE VALUES (4, 5, '', 0, 0)",
    "INSERT INTO NODE VALUES (5, 11, 'it''s %1 %3', 1, 1)",
    "INSERT INTO LINK VALUES (5, 1)",
};

class ProjectDatabase : public ::testing::Test {
 protected:
    void SetUp() override {
        ASSERT_TRUE(temporary.isValid());
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", kConnection);
            database.setDatabaseName(temporary.filePath("database"));
            ASSERT_TRUE(database.open());
            for (const char* statement : kProject) {
                QSqlQuery query(database);
                ASSERT_TRUE(query.exec(statement)) << query.lastError().text().toStdString();
            }
            database.close();  // the lookups open it on demand
        }
    }
    void TearDown() override { QSqlDatabase::removeDatabase(kConnection); }

    QTemporaryDir temporary;
};

typedef std::vector<std::pair<int, int> > Pairs;

Pairs pairs(const QList<LinkIdStationId>& list) {
    Pairs out;
    for (const LinkIdStationId& entry : list) {
        out.push_back(std::make_pair(entry.linkId, entry.stationId));
    }
    return out;
}

LinkIdStationId entry(int linkId, unsigned char stationId) {
    LinkIdStationId made = {linkId, stationId};
    return made;
}

// --- nothing found, nothing there

TEST_F(ProjectDatabase, NoRowLeavesTheResultsAlone) {
    int link = 77;
    unsigned char station = 99;
    for (int port : {1003 /* its node is no default */, 4711, 0, -1, -0x7FFFFFFF - 1}) {
        EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, port, link, station)) << port;
        EXPECT_EQ(77, link) << port;
        EXPECT_EQ(99, station) << port;
    }
}

TEST_F(ProjectDatabase, NoRowGivesAnEmptyList) {
    QList<LinkIdStationId> out;
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 4, out));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 4711, out));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 2000, "192.168.1.12", 44818, out));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 2000, "192.168.1.10", 44819, out));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 1002, "192.168.1.10", 44818, out));
    EXPECT_TRUE(out.isEmpty());
}

TEST_F(ProjectDatabase, WhatTheCallerPutInCounts) {
    QList<LinkIdStationId> out;
    out.append(entry(55, 66));
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 4711, out));
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 4711, "1.2.3.4", 1, out));
    EXPECT_TRUE(GetLinkIdAndDefaultStationId("no such connection", 1, out));
    EXPECT_EQ((Pairs{{55, 66}}), pairs(out));
}

TEST(ProjectDatabaseFailure, NoConnection) {
    int link = 77;
    unsigned char station = 99;
    QList<LinkIdStationId> out;
    EXPECT_FALSE(GetLinkIdAndDefaultStationId("no such connection", 2000, link, station));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId("no such connection", 1, out));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId("no such connection", 2000, "", 0, out));
    EXPECT_EQ(77, link);
    EXPECT_EQ(99, station);
    EXPECT_TRUE(out.isEmpty());
}

TEST(ProjectDatabaseFailure, NoTables) {
    QTemporaryDir temporary;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", kConnection);
        database.setDatabaseName(temporary.filePath("empty"));
    }
    int link = 77;
    unsigned char station = 99;
    QList<LinkIdStationId> out;
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 2000, link, station));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 1, out));
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 2000, "", 0, out));
    EXPECT_EQ(77, link);
    EXPECT_TRUE(out.isEmpty());
    QSqlDatabase::removeDatabase(kConnection);
}

TEST_F(ProjectDatabase, AnAddressThatBreaksTheQueryFindsNothing) {
    QList<LinkIdStationId> out;
    EXPECT_FALSE(GetLinkIdAndDefaultStationId(kConnection, 1, "it's", 1, out));
    EXPECT_TRUE(out.isEmpty());
}

// --- found

TEST_F(ProjectDatabase, TheFirstRowOfAPort) {
    int link = 0;
    unsigned char station = 0;
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 2000, link, station));
    EXPECT_EQ(1, link);
    EXPECT_EQ(8, station);
}

TEST_F(ProjectDatabase, TheStationIsCutToEightBits) {
    int link = 0;
    unsigned char station = 0;
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 1002, link, station));
    EXPECT_EQ(3, link);
    EXPECT_EQ(2, station);
    QList<LinkIdStationId> out;
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 3, out));
    EXPECT_EQ((Pairs{{3, 2}}), pairs(out));
}

TEST_F(ProjectDatabase, EveryDefaultNodeOfALink) {
    QList<LinkIdStationId> out;
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 2, out));
    EXPECT_EQ((Pairs{{2, 9}, {2, 10}}), pairs(out));
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 1, out));
    EXPECT_EQ((Pairs{{2, 9}, {2, 10}, {1, 8}}), pairs(out));
}

TEST_F(ProjectDatabase, ByPortAndEndpoint) {
    QList<LinkIdStationId> out;
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 2000, "192.168.1.10", 44818, out));
    EXPECT_EQ((Pairs{{1, 8}}), pairs(out));
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 2000, "192.168.1.11", 44818, out));
    EXPECT_EQ((Pairs{{1, 8}, {2, 9}, {2, 10}}), pairs(out));
}

TEST_F(ProjectDatabase, TheAddressGoesIntoTheQueryAsItStands) {
    QList<LinkIdStationId> out;
    // A doubled quote is the caller's own escape; percent signs are no places of the text.
    EXPECT_TRUE(GetLinkIdAndDefaultStationId(kConnection, 1, "it''s %1 %3", 1, out));
    EXPECT_EQ((Pairs{{5, 11}}), pairs(out));
}

}  // namespace
