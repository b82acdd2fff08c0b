#include "common/device_setting.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QDataStream>
#include <cstring>
#include <vector>

#include "unit/common/debug_lines.h"
#include "unit/common/heap_in_use.h"

namespace {

DeviceSetting serialDefault() {
    return DeviceSetting(kDeviceTypeSerial, "COM2", 9600, 8, 0, 0);
}

DeviceSetting withEntries(int count) {
    DeviceSetting setting = serialDefault();
    for (int i = 0; i < count; ++i) {
        setting.socketList.append(DeviceSetting::SocketData(
            QString("192.168.1.%1").arg(10 + i), static_cast<unsigned short>(44818 + i)));
    }
    return setting;
}

QByteArray bytes(const char* hex) {
    return QByteArray::fromHex(hex);
}

QByteArray streamed(const DeviceSetting& setting) {
    QByteArray out;
    QDataStream stream(&out, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_7);
    stream << setting;
    return out;
}

QDataStream::Status readFrom(const QByteArray& data, DeviceSetting* setting) {
    QDataStream stream(data);
    stream.setVersion(QDataStream::Qt_4_7);
    stream >> *setting;
    return stream.status();
}

/// Hands out its bytes like a pipe: no size, no position.
class SequentialBytes : public QIODevice {
 public:
    explicit SequentialBytes(const QByteArray& bytes) : data(bytes) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return data.size() + QIODevice::bytesAvailable(); }

 protected:
    qint64 readData(char* out, qint64 max) override {
        const qint64 taken = qMin<qint64>(max, data.size());
        std::memcpy(out, data.constData(), static_cast<size_t>(taken));
        data.remove(0, static_cast<int>(taken));
        return taken;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

 private:
    QByteArray data;
};

/// Says that there is more, and never has any: a medium that fails under the reader.
class FailingAfter : public QIODevice {
 public:
    explicit FailingAfter(const QByteArray& bytes) : data(bytes) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }
    bool atEnd() const override { return false; }

 protected:
    qint64 readData(char* out, qint64 max) override {
        if (data.isEmpty()) {
            return -1;
        }
        const qint64 taken = qMin<qint64>(max, data.size());
        std::memcpy(out, data.constData(), static_cast<size_t>(taken));
        data.remove(0, static_cast<int>(taken));
        return taken;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

 private:
    QByteArray data;
};

// Every field but the list: type 32, "COM2", 9600, 8, 1, 2, extra 7, link 5, and index 1.
const char kHead[] =
    "00000020"          // type
    "00000008"          // bytes of the name
    "0043004f004d0032"  // C O M 2
    "00002580"          // baudrate 9600
    "00000008"          // databits
    "00000001"          // stopbits
    "00000002"          // parity
    "00000007"          // extraValue
    "00000005"          // linkID
    "00000001";         // currentIPIndex
const char kTwoEntries[] =
    "00000002"                          // count
    "00000010"                          // bytes of the first address
    "00310030002e0030002e0030002e0031"  // 10.0.0.1
    "af12"                              // 44818
    "00000010"
    "00310030002e0030002e0030002e0032"  // 10.0.0.2
    "ffff";                             // 65535

DeviceSetting goldenRecord() {
    DeviceSetting setting(kDeviceTypeSerial, "COM2", 9600, 8, 1, 2, 7, "not streamed");
    setting.linkID = 5;
    setting.socketList.append(DeviceSetting::SocketData("10.0.0.1", 44818));
    setting.socketList.append(DeviceSetting::SocketData("10.0.0.2", 65535));
    setting.currentIPIndex = 1;
    return setting;
}

void expectGoldenNumbers(const DeviceSetting& setting) {
    EXPECT_EQ(32, setting.type);
    EXPECT_EQ("COM2", setting.name.toStdString());
    EXPECT_EQ(9600, setting.baudrate);
    EXPECT_EQ(8, setting.databits);
    EXPECT_EQ(1, setting.stopbits);
    EXPECT_EQ(2, setting.parity);
    EXPECT_EQ(7, setting.extraValue);
    EXPECT_EQ(5, setting.linkID);
}

// --- construction

TEST(DeviceSetting, LongConstructorSetsEveryField) {
    const DeviceSetting setting(static_cast<device_type>(3), "COM1", 19200, 7, 2, 1, 11, "extra");
    EXPECT_EQ(3, setting.type);
    EXPECT_EQ("COM1", setting.name.toStdString());
    EXPECT_EQ(19200, setting.baudrate);
    EXPECT_EQ(7, setting.databits);
    EXPECT_EQ(2, setting.stopbits);
    EXPECT_EQ(1, setting.parity);
    EXPECT_EQ(11, setting.extraValue);
    EXPECT_EQ("extra", setting.extraText.toStdString());
    EXPECT_EQ(-1, setting.linkID);
    EXPECT_EQ(0, setting.currentIPIndex);
    EXPECT_TRUE(setting.socketList.isEmpty());
}

TEST(DeviceSetting, ShortConstructorLeavesExtrasEmpty) {
    const DeviceSetting setting = serialDefault();
    EXPECT_EQ(32, setting.type);
    EXPECT_EQ(0, setting.extraValue);
    EXPECT_EQ("", setting.extraText.toStdString());
    EXPECT_EQ(-1, setting.linkID);
    EXPECT_EQ(0, setting.currentIPIndex);
    EXPECT_TRUE(setting.socketList.isEmpty());
}

TEST(DeviceSetting, TypeIsAThirtyTwoBitNumber) {
    EXPECT_EQ(4u, sizeof(device_type));
}

// --- reading an endpoint

TEST(DeviceSetting, EmptyListYieldsEmptyEndpoint) {
    const DeviceSetting setting = serialDefault();
    EXPECT_EQ("", setting.socketIP().toStdString());
    EXPECT_EQ(0, setting.port());
}

TEST(DeviceSetting, IndexOutsideYieldsEmptyEndpoint) {
    const DeviceSetting setting = withEntries(2);
    for (int index : {2, 3, 0x7FFFFFFF, -2, -0x7FFFFFFF - 1}) {
        EXPECT_EQ("", setting.socketIP(index).toStdString()) << index;
        EXPECT_EQ(0, setting.port(index)) << index;
    }
}

TEST(DeviceSetting, CurrentIndexOutsideYieldsEmptyEndpoint) {
    DeviceSetting setting = withEntries(2);
    for (int index : {2, -1, -7}) {
        setting.currentIPIndex = index;
        EXPECT_EQ("", setting.socketIP().toStdString()) << index;
        EXPECT_EQ(0, setting.port()) << index;
    }
}

TEST(DeviceSetting, EndpointByIndexAndByCurrentIndex) {
    DeviceSetting setting = withEntries(3);
    EXPECT_EQ("192.168.1.11", setting.socketIP(1).toStdString());
    EXPECT_EQ(44819, setting.port(1));
    EXPECT_EQ("192.168.1.10", setting.socketIP().toStdString());
    setting.currentIPIndex = 2;
    EXPECT_EQ("192.168.1.12", setting.socketIP(-1).toStdString());
    EXPECT_EQ(44820, setting.port(-1));
}

// --- changing an endpoint

TEST(DeviceSetting, ChangesOutsideTheListAreIgnored) {
    for (int index : {2, 3, 0x7FFFFFFF, -2, -100}) {
        DeviceSetting setting = withEntries(2);
        const QList<DeviceSetting::SocketData> before = setting.socketList;
        setting.setSocketIP("1.2.3.4", index);
        setting.setPort(1, index);
        EXPECT_EQ(before, setting.socketList) << index;
    }
}

TEST(DeviceSetting, ChangesOfAnEmptyListAreIgnored) {
    for (int index : {-1, 0, 1}) {
        DeviceSetting setting = serialDefault();
        setting.setSocketIP("1.2.3.4", index);
        setting.setPort(1, index);
        EXPECT_TRUE(setting.socketList.isEmpty()) << index;
    }
}

TEST(DeviceSetting, ChangesThroughACurrentIndexOutsideAreIgnored) {
    for (int current : {2, -1, -5}) {
        DeviceSetting setting = withEntries(2);
        setting.currentIPIndex = current;
        const QList<DeviceSetting::SocketData> before = setting.socketList;
        setting.setSocketIP("1.2.3.4");
        setting.setPort(1);
        EXPECT_EQ(before, setting.socketList) << current;
    }
}

TEST(DeviceSetting, MinusOneChangesTheCurrentEntry) {
    DeviceSetting setting = withEntries(2);
    setting.currentIPIndex = 1;
    setting.setSocketIP("1.2.3.4", -1);
    EXPECT_EQ("1.2.3.4", setting.socketIP(1).toStdString());
    EXPECT_EQ(44819, setting.port(1));
    setting.setPort(99);
    EXPECT_EQ("1.2.3.4", setting.socketIP(1).toStdString());
    EXPECT_EQ(99, setting.port(1));
    EXPECT_EQ("192.168.1.10", setting.socketIP(0).toStdString());
    EXPECT_EQ(44818, setting.port(0));
}

TEST(DeviceSetting, ChangesKeepTheOtherHalfAndTheCopies) {
    DeviceSetting setting = withEntries(2);
    const DeviceSetting copy = setting;
    setting.setPort(65535, 0);
    setting.setSocketIP("1.2.3.4", 1);
    EXPECT_EQ("192.168.1.10", setting.socketIP(0).toStdString());
    EXPECT_EQ(65535, setting.port(0));
    EXPECT_EQ("1.2.3.4", setting.socketIP(1).toStdString());
    EXPECT_EQ(44819, setting.port(1));
    EXPECT_EQ(44818, copy.port(0));
    EXPECT_EQ("192.168.1.11", copy.socketIP(1).toStdString());
}

TEST(DeviceSetting, CurrentIndexIsTakenInsideTheListOnly) {
    DeviceSetting setting = withEntries(3);
    setting.setCurrentIPIndex(2);
    EXPECT_EQ(2, setting.currentIPIndex);
    for (int index : {-1, 3, 4, -0x7FFFFFFF - 1, 0x7FFFFFFF}) {
        setting.setCurrentIPIndex(index);
        EXPECT_EQ(2, setting.currentIPIndex) << index;
    }
    setting.setCurrentIPIndex(0);
    EXPECT_EQ(0, setting.currentIPIndex);
}

// --- endpoints from text

TEST(DeviceSetting, SocketDataTakesPortsFromDecimalText) {
    const struct {
        const char* text;
        unsigned short port;
    } rows[] = {
        {"abc", 0},    {"", 0},          {"65536", 0},
        {"-1", 0},     {"44818x", 0},    {"0x10", 0},
        {"44,818", 0}, {"1.5", 0},       {"99999999999999999999", 0},
        {"0", 0},      {"44818", 44818}, {"65535", 65535},
        {"007", 7},
    };
    for (const auto& row : rows) {
        DeviceSetting setting = serialDefault();
        setting.setSocketData({qMakePair(QString("192.168.1.10"), QString(row.text))});
        ASSERT_EQ(1, setting.socketList.size()) << row.text;
        EXPECT_EQ("192.168.1.10", setting.socketIP(0).toStdString()) << row.text;
        EXPECT_EQ(row.port, setting.port(0)) << row.text;
    }
}

TEST(DeviceSetting, SocketDataReplacesTheListAndKeepsTheIndex) {
    DeviceSetting setting = withEntries(3);
    setting.currentIPIndex = 2;
    setting.setSocketData(
        {qMakePair(QString("not checked"), QString("1")), qMakePair(QString(), QString("2"))});
    ASSERT_EQ(2, setting.socketList.size());
    EXPECT_EQ("not checked", setting.socketIP(0).toStdString());
    EXPECT_EQ(2, setting.port(1));
    EXPECT_EQ(2, setting.currentIPIndex);
    EXPECT_EQ("", setting.socketIP().toStdString());
    setting.setSocketData({});
    EXPECT_TRUE(setting.socketList.isEmpty());
}

// --- the stream

TEST(DeviceSetting, StreamsTheRuntimesBytes) {
    EXPECT_EQ((bytes(kHead) + bytes(kTwoEntries)).toHex().toStdString(),
              streamed(goldenRecord()).toHex().toStdString());
}

TEST(DeviceSetting, StreamsANullNameAndAnEmptyList) {
    const DeviceSetting setting(static_cast<device_type>(-2), QString(), -1, 0, 0, 0);
    EXPECT_EQ(
        "fffffffe"
        "ffffffff"
        "ffffffff"
        "00000000"
        "00000000"
        "00000000"
        "00000000"
        "ffffffff"
        "00000000"
        "00000000",
        streamed(setting).toHex().toStdString());
}

TEST(DeviceSetting, ByteOrderIsTheStreams) {
    QByteArray out;
    QDataStream stream(&out, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_7);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << serialDefault();
    EXPECT_EQ(
        "20000000"
        "08000000"
        "43004f004d003200"
        "80250000",
        out.left(20).toHex().toStdString());
}

TEST(DeviceSetting, AFreshRecordReadsAllButTheIndex) {
    DeviceSetting setting(static_cast<device_type>(0), "old", 1, 1, 1, 1, 1, "own text");
    ASSERT_EQ(QDataStream::Ok, readFrom(bytes(kHead) + bytes(kTwoEntries), &setting));
    expectGoldenNumbers(setting);
    EXPECT_EQ(0, setting.currentIPIndex);
    EXPECT_EQ("own text", setting.extraText.toStdString());
    ASSERT_EQ(2, setting.socketList.size());
    EXPECT_EQ("10.0.0.1", setting.socketIP(0).toStdString());
    EXPECT_EQ(44818, setting.port(0));
    EXPECT_EQ("10.0.0.2", setting.socketIP(1).toStdString());
    EXPECT_EQ(65535, setting.port(1));
}

TEST(DeviceSetting, ARecordWithAListAsLongKeepsTheIndex) {
    for (int held : {2, 3, 5}) {
        DeviceSetting setting = withEntries(held);
        ASSERT_EQ(QDataStream::Ok, readFrom(bytes(kHead) + bytes(kTwoEntries), &setting));
        EXPECT_EQ(1, setting.currentIPIndex) << held;
        EXPECT_EQ("10.0.0.2", setting.socketIP().toStdString()) << held;
        EXPECT_EQ(2, setting.socketList.size()) << held;
    }
}

TEST(DeviceSetting, TheIndexIsTestedAgainstTheOldList) {
    // The old list takes index 1, the new one is empty.
    DeviceSetting setting = withEntries(2);
    readFrom(bytes(kHead) + bytes("00000000"), &setting);
    EXPECT_EQ(1, setting.currentIPIndex);
    EXPECT_TRUE(setting.socketList.isEmpty());
    // The old list is too short: the old index stays.
    DeviceSetting shorter = withEntries(1);
    readFrom(bytes(kHead) + bytes(kTwoEntries), &shorter);
    EXPECT_EQ(0, shorter.currentIPIndex);
}

TEST(DeviceSetting, SeveralRecordsFollowEachOther) {
    const QByteArray one = bytes(kHead) + bytes(kTwoEntries);
    QDataStream stream(one + one);
    stream.setVersion(QDataStream::Qt_4_7);
    DeviceSetting first = serialDefault();
    DeviceSetting second = serialDefault();
    stream >> first >> second;
    EXPECT_EQ(QDataStream::Ok, stream.status());
    EXPECT_EQ(2, first.socketList.size());
    expectGoldenNumbers(second);
    EXPECT_EQ(first.socketList, second.socketList);
    EXPECT_TRUE(stream.atEnd());
}

TEST(DeviceSetting, EveryShortStreamReadsWithoutHarm) {
    const QByteArray whole = bytes(kHead) + bytes(kTwoEntries);
    const int afterFirstPair = whole.size() - 2 - 16 - 4;
    for (int size = 0; size < whole.size(); ++size) {
        DeviceSetting setting = withEntries(3);
        setting.currentIPIndex = 2;
        const QDataStream::Status status = readFrom(whole.left(size), &setting);
        // A stream that ends right after a pair ends the list without an error.
        EXPECT_EQ(size == afterFirstPair ? QDataStream::Ok : QDataStream::ReadPastEnd, status)
            << size;
        EXPECT_LE(setting.socketList.size(), 2) << size;
    }
}

TEST(DeviceSetting, AShortStreamLeavesZerosAndEmptyTexts) {
    DeviceSetting setting = withEntries(3);
    setting.linkID = 9;
    readFrom(bytes(kHead).left(4 + 4 + 4), &setting);  // the name is cut
    EXPECT_EQ(32, setting.type);
    EXPECT_EQ("", setting.name.toStdString());
    EXPECT_EQ(0, setting.baudrate);
    EXPECT_EQ(0, setting.parity);
    EXPECT_EQ(0, setting.linkID);
    EXPECT_EQ(0, setting.currentIPIndex);
    EXPECT_TRUE(setting.socketList.isEmpty());
}

TEST(DeviceSetting, AListCutShortKeepsWhatWasReached) {
    const QByteArray whole = bytes(kHead) + bytes(kTwoEntries);
    DeviceSetting setting = serialDefault();
    readFrom(whole.left(whole.size() - 2 - 16 - 4), &setting);  // ends after the first pair
    ASSERT_EQ(1, setting.socketList.size());
    EXPECT_EQ("10.0.0.1", setting.socketIP(0).toStdString());

    readFrom(whole.left(whole.size() - 2), &setting);  // ends before the second port
    ASSERT_EQ(2, setting.socketList.size());
    EXPECT_EQ("10.0.0.2", setting.socketIP(1).toStdString());
    EXPECT_EQ(0, setting.port(1));
}

TEST(DeviceSetting, AHugeCountReservesNoMoreThanTheStreamHolds) {
    for (const char* count : {"08000000", "7fffffff", "80000000", "ffffffff"}) {
        const QByteArray data = bytes(kHead) + bytes(count) +
                                bytes(
                                    "00000002"
                                    "0031"
                                    "0005");
        DeviceSetting setting = serialDefault();
        const size_t before = heapInUse();
        readFrom(data, &setting);
        const size_t after = heapInUse();
        EXPECT_LT(after, before + 64 * 1024) << count;
        ASSERT_EQ(1, setting.socketList.size()) << count;
        EXPECT_EQ("1", setting.socketIP(0).toStdString()) << count;
        EXPECT_EQ(5, setting.port(0)) << count;
    }
}

TEST(DeviceSetting, ASequentialDeviceIsReadPairByPair) {
    SequentialBytes device(bytes(kHead) + bytes(kTwoEntries));
    QDataStream stream(&device);
    stream.setVersion(QDataStream::Qt_4_7);
    DeviceSetting setting = serialDefault();
    stream >> setting;
    EXPECT_EQ(QDataStream::Ok, stream.status());
    expectGoldenNumbers(setting);
    ASSERT_EQ(2, setting.socketList.size());
    EXPECT_EQ("10.0.0.2", setting.socketIP(1).toStdString());
}

TEST(DeviceSetting, ASequentialDeviceReservesNothing) {
    SequentialBytes device(bytes(kHead) + bytes("08000000"
                                                "00000002"
                                                "0031"
                                                "0005"));
    QDataStream stream(&device);
    stream.setVersion(QDataStream::Qt_4_7);
    DeviceSetting setting = serialDefault();
    const size_t before = heapInUse();
    stream >> setting;
    EXPECT_LT(heapInUse(), before + 64 * 1024);
    EXPECT_EQ(1, setting.socketList.size());
}

TEST(DeviceSetting, AFailingDeviceEndsTheList) {
    FailingAfter device(bytes(kHead) + bytes("ffffffff"
                                             "00000002"
                                             "0031"
                                             "0005"));
    QDataStream stream(&device);
    stream.setVersion(QDataStream::Qt_4_7);
    DeviceSetting setting = serialDefault();
    stream >> setting;
    EXPECT_EQ(QDataStream::ReadPastEnd, stream.status());
    EXPECT_EQ(2, setting.socketList.size());
    EXPECT_EQ(5, setting.port(0));
    EXPECT_EQ(0, setting.port(1));
}

TEST(DeviceSetting, AStreamWithoutDeviceReadsNothing) {
    QDataStream stream;
    DeviceSetting setting = withEntries(1);
    stream >> setting;
    EXPECT_TRUE(setting.socketList.isEmpty());
}

// --- the diagnostic line

TEST(DeviceSetting, DumpsOneLine) {
    DebugLines debug;
    serialDefault().dump();
    ASSERT_EQ(1, debug.taken().size());
    EXPECT_EQ(
        "type: 32 string: \"COM2\" baudrate: 9600 databits: 8 stopbits: 0 parity: 0 linkID: -1 "
        "current ip: \"\" current port: 0",
        debug.taken().at(0).toStdString());
}

TEST(DeviceSetting, DumpsTheCurrentEndpoint) {
    DebugLines debug;
    goldenRecord().dump();
    ASSERT_EQ(1, debug.taken().size());
    EXPECT_EQ(
        "type: 32 string: \"COM2\" baudrate: 9600 databits: 8 stopbits: 1 parity: 2 linkID: 5 "
        "current ip: \"10.0.0.2\" current port: 65535",
        debug.taken().at(0).toStdString());
}

}  // namespace
