#include "runtime/communicator_command.h"

#include <gtest/gtest.h>

#include <QList>
#include <cstddef>

namespace {

const quint32 kLargestCount = 0xFFFFFFFFu;
const int kLargestSize = 0x7FFFFFFF;

TEST(CommunicatorCommand, DataSizeByKindAndCount) {
    const struct {
        qint32 kind;
        quint32 count;
        int size;
    } rows[] = {
        // bits: bytes rounded up, never none
        {0, 0, 1},
        {0, 1, 1},
        {0, 7, 1},
        {0, 8, 1},
        {0, 9, 2},
        {0, 16, 2},
        {0, 17, 3},
        {0, 0x7FFFFFFF, 0x10000000},
        {0, 0x80000000u, 0x10000000},
        {0, 0xFFFFFFF8u, 0x1FFFFFFF},
        {0, kLargestCount, 0x20000000},
        // bytes and blocks
        {1, 0, 0},
        {1, 1, 1},
        {1, 1024, 1024},
        {1, 0x7FFFFFFF, kLargestSize},
        {1, 0x80000000u, kLargestSize},
        {1, kLargestCount, kLargestSize},
        {5, 0, 0},
        {5, 10, 10},
        {5, kLargestCount, kLargestSize},
        // words
        {2, 0, 0},
        {2, 1, 2},
        {2, 3, 6},
        {2, 0x3FFFFFFF, 0x7FFFFFFE},
        {2, 0x40000000, kLargestSize},
        {2, 0x80000000u, kLargestSize},
        {2, 0x80000001u, kLargestSize},
        {2, kLargestCount, kLargestSize},
        // double words
        {3, 0, 0},
        {3, 1, 4},
        {3, 256, 1024},
        {3, 0x1FFFFFFF, 0x7FFFFFFC},
        {3, 0x20000000, kLargestSize},
        {3, 0x40000000, kLargestSize},
        {3, 0x40000001, kLargestSize},
        {3, kLargestCount, kLargestSize},
        // quad words
        {4, 0, 0},
        {4, 1, 8},
        {4, 2, 16},
        {4, 0x0FFFFFFF, 0x7FFFFFF8},
        {4, 0x20000000, kLargestSize},
        {4, 0x20000001, kLargestSize},
        {4, kLargestCount, kLargestSize},
        // every other kind
        {6, 0, 1},
        {6, 1, 1},
        {6, 100, 1},
        {6, kLargestCount, 1},
        {7, 5, 1},
        {-1, 5, 1},
        {0x7FFFFFFF, 5, 1},
        {-0x7FFFFFFF - 1, 0, 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.size, CommunicatorCommand(row.kind, row.count, "DINT0:A").getDataSize())
            << "kind " << row.kind << " count " << row.count;
    }
}

TEST(CommunicatorCommand, StringKey) {
    EXPECT_EQ("INT0:A_2_1", CommunicatorCommand(2, 1, "INT0:A").stringKey().toStdString());
    EXPECT_EQ("DINT0:COUNTER_3_1",
              CommunicatorCommand(3, 1, "DINT0:COUNTER").stringKey().toStdString());
    EXPECT_EQ("_0_0", CommunicatorCommand().stringKey().toStdString());
    EXPECT_EQ("REAL0:VALUES[3]_-1_4294967295",
              CommunicatorCommand(-1, kLargestCount, "REAL0:VALUES[3]").stringKey().toStdString());
}

TEST(CommunicatorCommand, CopiesInListsAreIndependent) {
    QList<CommunicatorCommand> list;
    list.append(CommunicatorCommand(3, 1, "DINT0:A"));
    QList<CommunicatorCommand> copy = list;
    copy[0].address = "DINT0:B";
    copy[0].unitCount = 2;
    EXPECT_EQ("DINT0:A_3_1", list.at(0).stringKey().toStdString());
    EXPECT_EQ("DINT0:B_3_2", copy.at(0).stringKey().toStdString());
}

TEST(CommunicatorCommand, OperationsAreVirtual) {
    class Runtimes : public CommunicatorCommand {
     public:
        int getDataSize() const override { return 42; }
        QString stringKey() const override { return "key"; }
    };
    const Runtimes command;
    const CommunicatorCommand& asSeenByADriver = command;
    EXPECT_EQ(42, asSeenByADriver.getDataSize());
    EXPECT_EQ("key", asSeenByADriver.stringKey().toStdString());
}

TEST(CommunicatorCommand, FieldsLieInTheContractsOrder) {
    const CommunicatorCommand command;
    const char* start = reinterpret_cast<const char*>(&command);
    const size_t table = sizeof(void*);
    EXPECT_EQ(table, size_t(reinterpret_cast<const char*>(&command.unitKind) - start));
    EXPECT_EQ(table + 4, size_t(reinterpret_cast<const char*>(&command.unitCount) - start));
    EXPECT_EQ(table + 8, size_t(reinterpret_cast<const char*>(&command.address) - start));
}

}  // namespace
