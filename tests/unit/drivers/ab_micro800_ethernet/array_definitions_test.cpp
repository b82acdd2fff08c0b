#include <errno.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QSqlDatabase>
#include <QStringList>
#include <thread>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "runtime/abstract_device_interface.h"
#include "support/app_directory/app_directory.h"

namespace {

class Device : public AbstractDeviceInterface {
 public:
    explicit Device(int link)
        : device(device_type(32), "COM2", 9600, 8, 0, 0), driver(500, 0, 0, 0) {
        device.linkID = link;
    }
    DeviceSetting* deviceSetting() override { return &device; }
    DriverSetting* driverSetting() override { return &driver; }
    int retryCount() override { return 0; }
    int stationNumber() override { return 0; }

    DeviceSetting device;
    DriverSetting driver;
};

TEST(LgxArrayDef, SizeIsTheProductOfTheWidths) {
    LgxArrayDef def;
    EXPECT_EQ(0, def.size());
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.arrayDefFromStr("0..9", def));
    EXPECT_EQ(10, def.size());
    ASSERT_TRUE(driver.arrayDefFromStr("1..3,0..4", def));
    EXPECT_EQ(15, def.size());
    ASSERT_TRUE(driver.arrayDefFromStr("1..3,0..4,2..3", def));
    EXPECT_EQ(30, def.size());
    ASSERT_TRUE(driver.arrayDefFromStr("7..7", def));
    EXPECT_EQ(1, def.size());
}

TEST(LgxArrayDef, HugeBoundsAreCutNotOverflown) {
    LgxArrayDef def;
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.arrayDefFromStr("0..2147483647,0..2147483647,0..2147483647", def));
    EXPECT_EQ(2147483647, def.size());
    EXPECT_EQ(-1, driver.strToValueOffset("2147483647,2147483647,2147483647", def, 8));
    EXPECT_EQ(-1, driver.strToValueOffset("0,1,0", def, 4));
}

TEST(LgxArrayDef, PartsBeyondTheThirdDoNotCount) {
    LgxArrayDef def;
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.arrayDefFromStr("1..3,0..4,2..3", def));
    def.dims = 4;  // as a failed parse leaves it
    EXPECT_EQ(30, def.size());
    EXPECT_EQ(-1, driver.strToValueOffset("1,1,2,0", def, 4));
}

TEST(LgxArrayDef, LargestIndexNamesAnElement) {
    LgxArrayDef def;
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.arrayDefFromStr("2147483640..2147483647", def));
    EXPECT_EQ(28, driver.strToValueOffset("2147483647", def, 4));
    EXPECT_EQ(-1, driver.strToValueOffset("2147483648", def, 4));
}

struct BadRange {
    const char* ranges;
    int dims;
};

void PrintTo(const BadRange& row, std::ostream* out) {
    *out << row.ranges;
}

class BadRanges : public ::testing::TestWithParam<BadRange> {};

TEST_P(BadRanges, AreRefusedAndLeaveTheCount) {
    DriverABMicro800Eth driver;
    LgxArrayDef def;
    EXPECT_FALSE(driver.arrayDefFromStr(GetParam().ranges, def));
    EXPECT_EQ(GetParam().dims, def.dims);
}

INSTANTIATE_TEST_SUITE_P(All, BadRanges,
                         ::testing::Values(BadRange{"5..2", 1}, BadRange{"", 1}, BadRange{"5", 1},
                                           BadRange{"5..", 1}, BadRange{"..5", 1},
                                           BadRange{"1.5", 1}, BadRange{"0..1,", 2},
                                           BadRange{"0..1,0..1,0..1,0..1", 4},
                                           BadRange{"0..99999999999", 1},
                                           BadRange{"-99999999999..5", 1}));

/// What an earlier call left in errno says nothing about these numbers.
TEST(ArrayRanges, AreReadWhateverErrnoWasBefore) {
    DriverABMicro800Eth driver;
    LgxArrayDef def;
    errno = ERANGE;
    EXPECT_TRUE(driver.arrayDefFromStr("1..3,0..4", def));
    EXPECT_EQ(15, def.size());
    // A range that does not fit leaves it behind.
    EXPECT_FALSE(driver.arrayDefFromStr("0..99999999999999999999", def));
    EXPECT_TRUE(driver.arrayDefFromStr("0..9", def));
    EXPECT_EQ(10, def.size());
}

TEST(ArrayOffset, GoesRowByRow) {
    DriverABMicro800Eth driver;
    LgxArrayDef def;
    ASSERT_TRUE(driver.arrayDefFromStr("1..3,0..4", def));
    EXPECT_EQ(32, driver.strToValueOffset("2,3", def, 4));
    EXPECT_EQ(0, driver.strToValueOffset("1", def, 4));
    EXPECT_EQ(4, driver.strToValueOffset("2", def, 4));
    EXPECT_EQ(-20, driver.strToValueOffset("0,0", def, 4));
    EXPECT_EQ(-1, driver.strToValueOffset("1,1,1", def, 4));
    EXPECT_EQ(-4, driver.strToValueOffset("x", def, 4));  // no number counts as 0
    ASSERT_TRUE(driver.arrayDefFromStr("1..2,1..3,1..4", def));
    EXPECT_EQ(((1 * 3 + 2) * 4 + 3) * 2, driver.strToValueOffset("2,3,4", def, 2));
}

TEST(ArrayOffset, AnIndexThatDoesNotFitIsNoElement) {
    DriverABMicro800Eth driver;
    LgxArrayDef def;
    ASSERT_TRUE(driver.arrayDefFromStr("0..9", def));
    EXPECT_EQ(-1, driver.strToValueOffset("4294967296", def, 4));
    EXPECT_EQ(-1, driver.strToValueOffset("99999999999999999999999", def, 4));
    EXPECT_EQ(-1, driver.strToValueOffset("-4294967296", def, 4));
}

/// Bounds are not checked: the offset of what is far outside does not fit an int.
TEST(ArrayOffset, OneThatDoesNotFitIsNoElement) {
    DriverABMicro800Eth driver;
    LgxArrayDef def;
    def.dims = 1;
    def.bounds[0] = {2147483647, 2147483647};
    EXPECT_EQ(-2147483647, driver.strToValueOffset("0", def, 1));
    EXPECT_EQ(-1, driver.strToValueOffset("0", def, 4));
    EXPECT_EQ(-1, driver.strToValueOffset("-2147483648", def, 4));
    def.dims = 2;
    const int lowest = -2147483647 - 1;
    def.bounds[0] = {lowest, 2147483647};
    def.bounds[1] = {lowest, -1};
    // (2^32 - 1) rows of 2^31 elements are just below 2^63, and 2^32 - 1 more are above.
    EXPECT_EQ(-1, driver.strToValueOffset("2147483647,2147483647", def, 1));
    EXPECT_EQ(-1, driver.strToValueOffset("2147483647,-2147483648", def, 1));
    // 2^62 elements of 8 bytes.
    EXPECT_EQ(-1, driver.strToValueOffset("0,-2147483648", def, 8));
}

TEST(ArrayDefinitions, UnknownNameHasNoSizeAndNoOffset) {
    DriverABMicro800Eth driver;
    EXPECT_FALSE(driver.arrayDefined("ARR"));
    EXPECT_EQ(0, driver.arraySize("ARR"));
    EXPECT_EQ(-1, driver.arrayElementByteOffset("ARR", "0", 4));
}

TEST(ArrayDefinitions, AreReadFromTheProject) {
    writeProjectDatabase(QStringList() << "DINT0:ARR[0..9]"
                                       << "dint0:low[1..3,0..4]"
                                       << "DINT0:BACK[5..2]"
                                       << "INT0:TWICE[0..3]"
                                       << "REAL0:PLAIN"
                                       << "INT0:FOUR[0..1,0..1,0..1,0..1]"
                                       << "INT0:TWICE[0..7]",
                         7);
    DriverABMicro800Eth driver;
    Device device(7);
    ASSERT_TRUE(driver.readDB(&device)) << driver.getLastError().toStdString();
    EXPECT_EQ(10, driver.arraySize("ARR"));
    EXPECT_EQ(15, driver.arraySize("LOW"));
    EXPECT_EQ(32, driver.arrayElementByteOffset("LOW", "2,3", 4));
    EXPECT_FALSE(driver.arrayDefined("low"));
    EXPECT_FALSE(driver.arrayDefined("BACK"));
    EXPECT_FALSE(driver.arrayDefined("PLAIN"));
    EXPECT_FALSE(driver.arrayDefined("FOUR"));
    EXPECT_EQ(8, driver.arraySize("TWICE"));
}

TEST(ArrayDefinitions, OnlyThoseOfTheDevicesLink) {
    writeProjectDatabase(QStringList("DINT0:ARR[0..9]"), 7);
    DriverABMicro800Eth driver;
    Device device(8);
    ASSERT_TRUE(driver.readDB(&device));
    EXPECT_FALSE(driver.arrayDefined("ARR"));
}

TEST(ArrayDefinitions, AreReadOnceAndTheDatabaseIsClosed) {
    writeProjectDatabase(QStringList("DINT0:ARR[0..9]"));
    DriverABMicro800Eth driver;
    Device device(1);
    ASSERT_TRUE(driver.readDB(&device));
    EXPECT_EQ(0, QSqlDatabase::connectionNames().size());
    removeProjectDatabase();
    EXPECT_TRUE(driver.readDB(&device));
    EXPECT_EQ(10, driver.arraySize("ARR"));
}

TEST(ArrayDefinitions, MissingDatabaseIsTriedAgain) {
    removeProjectDatabase();
    DriverABMicro800Eth driver;
    Device device(1);
    EXPECT_FALSE(driver.readDB(&device));
    EXPECT_TRUE(driver.hasError());
    EXPECT_EQ(QString("can not open database"), driver.getLastError());
    EXPECT_TRUE(driver.read(&device, CommunicatorCommand(3, 1, "DINT0:A")).isEmpty());
    EXPECT_EQ(QString("can not open database"), driver.getLastError());
    EXPECT_FALSE(driver.write(&device, CommunicatorCommand(3, 1, "DINT0:A"), QByteArray(4, 0)));
    writeProjectDatabase(QStringList("DINT0:ARR[0..9]"));
    EXPECT_TRUE(driver.readDB(&device));
    EXPECT_EQ(10, driver.arraySize("ARR"));
}

TEST(ArrayDefinitions, BrokenDatabaseIsAnErrorAndNoCrash) {
    QFile file(writeProjectDatabase(QStringList()));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("this is no database, not even a header of one................");
    file.close();
    DriverABMicro800Eth driver;
    Device device(1);
    EXPECT_FALSE(driver.readDB(&device));
    EXPECT_EQ(QString("failed to initialize array definition table"), driver.getLastError());
    EXPECT_FALSE(driver.readDB(&device));
    EXPECT_EQ(QString("failed to initialize array definition table"), driver.getLastError());
}

/// The runtime may change its thread between two accesses.
TEST(ArrayDefinitions, AnotherThreadTriesAgainWhatOneFailedAt) {
    QFile file(writeProjectDatabase(QStringList()));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.close();
    DriverABMicro800Eth driver;
    Device device(1);
    std::thread([&] { EXPECT_FALSE(driver.readDB(&device)); }).join();
    EXPECT_FALSE(driver.readDB(&device));
    EXPECT_EQ(QString("failed to initialize array definition table"), driver.getLastError());
    std::thread([&] { EXPECT_FALSE(driver.readDB(&device)); }).join();
    writeProjectDatabase(QStringList("DINT0:ARR[0..9]"));
    EXPECT_TRUE(driver.readDB(&device)) << driver.getLastError().toStdString();
    EXPECT_EQ(10, driver.arraySize("ARR"));
    EXPECT_EQ(QStringList(), QSqlDatabase::connectionNames());
}

const char kTableProblem[] = "failed to initialize array definition table";

/// What the driver says about a project whose database was made by these statements. It keeps
/// nothing of it.
QString problemWith(const QStringList& statements) {
    writeProjectDatabase(QStringList());
    removeProjectDatabase();
    changeProjectDatabase(statements);
    DriverABMicro800Eth driver;
    Device device(1);
    EXPECT_FALSE(driver.readDB(&device));
    EXPECT_TRUE(driver.hasError());
    EXPECT_FALSE(driver.arrayDefined("A"));
    return driver.getLastError();
}

/// Statements for a table with so many rows of link 1, each with the address that the SQL
/// expression gives for its row number x.
QStringList tableOf(int rows, const QString& address) {
    return QStringList()
           << "CREATE TABLE custom_tag_table (address TEXT, connector_id INT)"
           << QString(
                  "INSERT INTO custom_tag_table WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL "
                  "SELECT x + 1 FROM n WHERE x < %1) SELECT %2, 1 FROM n")
                  .arg(QString::number(rows), address);
}

struct NoTable {
    const char* name;
    const char* statement;
};

void PrintTo(const NoTable& row, std::ostream* out) {
    *out << row.name;
}

const NoTable kNoTables[] = {
    {"EndlessView",
     "CREATE VIEW custom_tag_table AS WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM "
     "n) SELECT 'DINT0:A[0..9]' AS address, 1 AS connector_id FROM n"},
    {"ViewThatNeverComesToARow",
     "CREATE VIEW Custom_Tag_Table AS WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM "
     "n) SELECT 'DINT0:A[0..9]' AS address, 1 AS connector_id FROM n WHERE x < 0"},
    {"VirtualTable", "CREATE VIRTUAL TABLE custom_tag_table USING fts3(address, connector_id)"},
};

class DeclarationsInNoTable : public ::testing::TestWithParam<NoTable> {};

TEST_P(DeclarationsInNoTable, AreRefused) {
    EXPECT_EQ(QString(kTableProblem) + ": custom_tag_table is not a table",
              problemWith(QStringList(GetParam().statement)));
}

INSTANTIATE_TEST_SUITE_P(All, DeclarationsInNoTable, ::testing::ValuesIn(kNoTables));

TEST(ArrayDefinitions, AMissingTableHasTheFixedTextOnly) {
    EXPECT_EQ(QString(kTableProblem),
              problemWith(QStringList("CREATE TABLE other (address TEXT)")));
}

TEST(ArrayDefinitions, MoreRowsThanAnyProjectHasAreRefused) {
    EXPECT_EQ(QString(kTableProblem) + ": more than 100000 rows",
              problemWith(tableOf(100001, "'DINT0:A[0..9]'")));
}

TEST(ArrayDefinitions, ALongAddressSpoilsNoOther) {
    writeProjectDatabase(QStringList());
    removeProjectDatabase();
    changeProjectDatabase(
        tableOf(4,
                "CASE x WHEN 1 THEN 'DINT0:LONG' || hex(zeroblob(255)) || '[0..9]' "
                "WHEN 2 THEN 'DINT0:A[0..9] ' || hex(zeroblob(255)) "
                "WHEN 3 THEN 'DINT0:CUT[0..' || hex(zeroblob(250)) || '9]' "
                "ELSE 'DINT0:B[0..9]' END"));
    DriverABMicro800Eth driver;
    Device device(1);
    ASSERT_TRUE(driver.readDB(&device)) << driver.getLastError().toStdString();
    EXPECT_EQ(10, driver.arraySize("A"));
    EXPECT_EQ(10, driver.arraySize("B"));
    EXPECT_FALSE(driver.arrayDefined("CUT"));
    EXPECT_FALSE(driver.arrayDefined("LONG" + QString(510, '0')));
}

TEST(ArrayDefinitions, AsManyAndAsLongAsTheLimitsAreTaken) {
    const QString name = QString(500, 'A');  // with prefix and range 512 characters
    writeProjectDatabase(QStringList());
    removeProjectDatabase();
    changeProjectDatabase(
        tableOf(100000, "CASE x WHEN 100000 THEN 'DINT0:" + name + "[0..9]' ELSE 'REAL0:B' END"));
    DriverABMicro800Eth driver;
    Device device(1);
    ASSERT_TRUE(driver.readDB(&device)) << driver.getLastError().toStdString();
    EXPECT_EQ(10, driver.arraySize(name));
}

TEST(ArrayDefinitions, ADamageBehindTheFirstRowsIsAnError) {
    writeProjectDatabase(QStringList());
    removeProjectDatabase();
    const QString path =
        changeProjectDatabase(tableOf(3000, "'DINT0:A' || substr('x', 1, x - 1) || '[0..9]'"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const int kPageSize = 4096;
    ASSERT_TRUE(file.seek(9 * kPageSize));  // a page of rows in the middle
    ASSERT_EQ(kPageSize, file.write(QByteArray(kPageSize, '\xff')));
    file.close();
    DriverABMicro800Eth driver;
    Device device(1);
    EXPECT_FALSE(driver.readDB(&device));
    EXPECT_EQ(QString(kTableProblem) + ": database disk image is malformed", driver.getLastError());
    EXPECT_FALSE(driver.arrayDefined("A"));
}

TEST(ArrayDefinitions, ALockedDatabaseDelaysForMuchLessThanFiveSeconds) {
    writeProjectDatabase(QStringList("DINT0:A[0..9]"));
    DriverABMicro800Eth driver;
    Device device(1);
    {
        const ProjectLock lock;
        QElapsedTimer timer;
        timer.start();
        EXPECT_FALSE(driver.readDB(&device));
        EXPECT_GT(4000, timer.elapsed()) << "SQLite's own wait is five";
        EXPECT_EQ(QString(kTableProblem), driver.getLastError());
    }
    EXPECT_TRUE(driver.readDB(&device));
    EXPECT_EQ(10, driver.arraySize("A"));
}

/// Where the declarations could not be read the connection stays for the next attempt.
TEST(ArrayDefinitions, DestructionRemovesTheConnection) {
    const QString path = writeProjectDatabase(QStringList());
    QFile::remove(path);
    QFile empty(path);
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    {
        DriverABMicro800Eth driver;
        Device device(1);
        ASSERT_FALSE(driver.readDB(&device));
        EXPECT_EQ(1, QSqlDatabase::connectionNames().size());
    }
    EXPECT_EQ(0, QSqlDatabase::connectionNames().size());
}

}  // namespace
