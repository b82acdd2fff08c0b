// Setting records, and the shared helpers as the one umbrella header gives them.

#include <QDataStream>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "common/tools.h"
#include "runtime/communicator_command.h"
#include "unit/public_names/name_checks.h"

namespace {

typedef unsigned char Byte;
typedef const CommunicatorCommand& Command;

TEST(CommonNames, DeviceSetting) {
    typedef DeviceSetting Setting;
    typedef QList<QPair<QString, QString> > Texts;
    const Setting setting(device_type(32), "COM2", 9600, 8, 0, 0, 7, "text");
    EXPECT_EQ(-1, setting.linkID);
    EXPECT_EQ(0, Setting(device_type(32), "COM2", 9600, 8, 0, 0).extraValue);
    EXPECT_EQ(sizeof(qint32), sizeof(device_type));
    EXPECT_MEMBER(QString(int) const, Setting, socketIP);
    EXPECT_MEMBER(unsigned short(int) const, Setting, port);
    EXPECT_MEMBER(void(const QString&, int), Setting, setSocketIP);
    EXPECT_MEMBER(void(unsigned short, int), Setting, setPort);
    EXPECT_MEMBER(void(const Texts&), Setting, setSocketData);
    EXPECT_MEMBER(void(int), Setting, setCurrentIPIndex);
    EXPECT_MEMBER(void() const, Setting, dump);
    EXPECT_MEMBER(device_type, Setting, type);
    EXPECT_MEMBER(QString, Setting, name);
    EXPECT_MEMBER(qint32, Setting, baudrate);
    EXPECT_MEMBER(qint32, Setting, databits);
    EXPECT_MEMBER(qint32, Setting, stopbits);
    EXPECT_MEMBER(qint32, Setting, parity);
    EXPECT_MEMBER(qint32, Setting, extraValue);
    EXPECT_MEMBER(QString, Setting, extraText);
    EXPECT_MEMBER(qint32, Setting, linkID);
    EXPECT_MEMBER(qint32, Setting, currentIPIndex);
    typedef QList<QPair<QString, unsigned short> > Sockets;
    EXPECT_MEMBER(Sockets, Setting, socketList);
    EXPECT_FUNCTION(QDataStream & (QDataStream&, const Setting&), operator<<);
    EXPECT_FUNCTION(QDataStream & (QDataStream&, Setting&), operator>>);
}

TEST(CommonNames, DriverSetting) {
    typedef DriverSetting Setting;
    EXPECT_EQ(3000, Setting(3000, 3, 0, 0).timeout);
    EXPECT_EQ(3, Setting(3000, 3, 0, 0, "text", 5).retry);
    EXPECT_TRUE(Setting(3000, 3, 0, 0, "text", 5, "kept", true).extraFlag);
    EXPECT_MEMBER(void(const Setting&), Setting, copy);
    EXPECT_MEMBER(void() const, Setting, dump);
    EXPECT_MEMBER(qint32, Setting, timeout);
    EXPECT_MEMBER(qint32, Setting, retry);
    EXPECT_MEMBER(qint32, Setting, stationid);
    EXPECT_MEMBER(qint32, Setting, delay);
    EXPECT_MEMBER(QString, Setting, extraText);
    EXPECT_MEMBER(bool, Setting, extraFlag);
    EXPECT_FUNCTION(QDataStream & (QDataStream&, const Setting&), operator<<);
    EXPECT_FUNCTION(QDataStream & (QDataStream&, Setting&), operator>>);
}

TEST(CommonNames, ProjectDatabaseAndPaths) {
    typedef QList<LinkIdStationId> Found;
    EXPECT_EQ(QString("compile"), COMPILE_PATH);
    EXPECT_EQ(QString("database"), DATABASE_PATH);
    EXPECT_MEMBER(qint32, LinkIdStationId, linkId);
    EXPECT_MEMBER(Byte, LinkIdStationId, stationId);
    EXPECT_FUNCTION(QDir(), GetCompilePath);
    EXPECT_FUNCTION(QString(), GetDatabaseName);
    EXPECT_FUNCTION(int(const QString&), DevStrToHmiPort);
    EXPECT_FUNCTION(bool(const QString&, int, int&, Byte&), GetLinkIdAndDefaultStationId);
    EXPECT_FUNCTION(bool(const QString&, int, Found&), GetLinkIdAndDefaultStationId);
    EXPECT_FUNCTION(bool(const QString&, int, const QString&, unsigned short, Found&),
                    GetLinkIdAndDefaultStationId);
    EXPECT_FUNCTION(bool(long long), ProcessIsRunning);
    EXPECT_FUNCTION(qint64(), CurrentMSecsSinceBoot);
    EXPECT_FUNCTION(void(unsigned long), HRSleep);
}

TEST(CommonNames, Bits) {
    EXPECT_FUNCTION(void(quint8&, int), setBit);
    EXPECT_FUNCTION(void(quint16&, int), setBit);
    EXPECT_FUNCTION(void(quint32&, int), setBit);
    EXPECT_FUNCTION(void(quint8&, int), clearBit);
    EXPECT_FUNCTION(void(quint16&, int), clearBit);
    EXPECT_FUNCTION(void(quint32&, int), clearBit);
    EXPECT_FUNCTION(bool(quint8, int), getBit);
    EXPECT_FUNCTION(bool(quint16, int), getBit);
    EXPECT_FUNCTION(bool(quint32, int), getBit);
    EXPECT_FUNCTION(bool(const QByteArray&, int), getBit);
    EXPECT_FUNCTION(void(QByteArray&, int, bool), setBit);
    EXPECT_FUNCTION(bool(const Byte*, int), getBit);
    EXPECT_FUNCTION(bool(const char*, int), getBit);
    EXPECT_FUNCTION(void(Byte*, int, bool), setBit);
    EXPECT_FUNCTION(void(char*, int, bool), setBit);
    EXPECT_FUNCTION(void(Byte*, int, const Byte*, int, int), CopyBits);
    EXPECT_FUNCTION(void(QByteArray&, int, const QByteArray&, int, int), CopyBits);
    EXPECT_FUNCTION(void(Byte*, int, int), RightShiftNBits);
    EXPECT_FUNCTION(QByteArray(const QByteArray&, quint32), FitBitArray);
    EXPECT_FUNCTION(void(QByteArray&, quint32), clearUnnecessaryBits);
    EXPECT_FUNCTION(QByteArray(const QByteArray&, quint32), ExpandBitsToBytes);
}

TEST(CommonNames, Bytes) {
    typedef QVector<quint32> DWords;
    typedef QVector<quint16> Words;
    EXPECT_FUNCTION(qint32(const QByteArray&), QByteArrayToInt);
    EXPECT_FUNCTION(quint16(const QByteArray&), QByteArrayToWord);
    EXPECT_FUNCTION(qint16(const QByteArray&), QByteArrayToShort);
    EXPECT_FUNCTION(QByteArray(qint32), intToByteArray);
    EXPECT_FUNCTION(QByteArray(quint16), wordToByteArray);
    EXPECT_FUNCTION(QByteArray(qint16), shortToByteArray);
    EXPECT_FUNCTION(void(QByteArray&, quint16), appendBigEndianUShort);
    EXPECT_FUNCTION(bool(), isBigEndian);
    EXPECT_FUNCTION(QByteArray(const DWords&), toBigEndianULongArray);
    EXPECT_FUNCTION(QByteArray(const Words&), toBigEndianUShortArray);
    EXPECT_FUNCTION(QByteArray(const DWords&), toLittleEndianULongArray);
    EXPECT_FUNCTION(QByteArray(const Words&), toLittleEndianUShortArray);
    EXPECT_FUNCTION(DWords(const QByteArray&), fromBigEndianULongArray);
    EXPECT_FUNCTION(Words(const QByteArray&), fromBigEndianUShortArray);
    EXPECT_FUNCTION(QByteArray(const QByteArray&), reverseArray);
    EXPECT_FUNCTION(void(Byte*, int), ReverseArray);
    EXPECT_FUNCTION(void(Byte*, int, int), RotateArray);
    EXPECT_FUNCTION(void(const QByteArray&), dumpByteArray);
    EXPECT_FUNCTION(unsigned(const char*, int), HexToUInt);
}

TEST(CommonNames, SizesAndCommands) {
    EXPECT_FUNCTION(quint32(quint32), NumOfBitsToNumOfBytes);
    EXPECT_FUNCTION(quint32(quint32), NumOfBitsToNumOfWords);
    EXPECT_FUNCTION(quint32(quint32), NumOfBitsToNumOfDWords);
    EXPECT_FUNCTION(quint32(quint32), NumOfBytesToNumOfWords);
    EXPECT_FUNCTION(quint32(quint32), NumOfBytesToNumOfDWords);
    EXPECT_FUNCTION(quint32(quint32), NumOfBytesToNumOfQuadWords);
    EXPECT_FUNCTION(QByteArray(const QByteArray&), To16bitsData);
    EXPECT_FUNCTION(QByteArray(const QByteArray&), To32bitsData);
    EXPECT_FUNCTION(QByteArray(const QByteArray&), To64bitsData);
    EXPECT_FUNCTION(int(Command), GetSafeDataLen);
    EXPECT_FUNCTION(QByteArray(Command, const QByteArray&), ToSafeData);
    EXPECT_FUNCTION(bool(Command), isBitCommand);
    EXPECT_FUNCTION(bool(Command), isByteCommand);
    EXPECT_FUNCTION(bool(Command), isWordCommand);
    EXPECT_FUNCTION(bool(Command), isDoubleWordCommand);
    EXPECT_FUNCTION(bool(Command), isBlockCommand);
    EXPECT_FUNCTION(QByteArray(Command, const QByteArray&), getBitData);
    EXPECT_FUNCTION(QString(const QString&), ExtractPrefixSymbol);
    EXPECT_FUNCTION(QString(const QString&), ExtractPLCDeviceAddress);
}

TEST(CommonNames, Packing) {
    EXPECT_FUNCTION(int(void*, const char*, ...), DataPack);
    EXPECT_FUNCTION(int(void*, const char*, va_list), VDataPack);
    EXPECT_FUNCTION(QByteArray(const char*, ...), ByteArrayPack);
    EXPECT_FUNCTION(QByteArray(const char*, va_list), VByteArrayPack);
    EXPECT_FUNCTION(int(const void*, const char*, ...), DataUnpack);
    EXPECT_FUNCTION(int(const void*, const char*, va_list), VDataUnpack);
}

TEST(CommonNames, ChecksumsAndCrcs) {
    EXPECT_FUNCTION(quint8(const void*, int), UInt8CheckSum);
    EXPECT_FUNCTION(quint16(const void*, int), UShortCheckSum);
    EXPECT_FUNCTION(quint8(const void*, int), XorUInt8CheckSum);
    EXPECT_FUNCTION(quint16(const void*, int), CRC16Calculate);
    EXPECT_FUNCTION(quint16(quint16, Byte), update_crc_16);
    EXPECT_FUNCTION(quint16(quint16, Byte), update_crc_ccitt);
    EXPECT_FUNCTION(quint16(quint16, Byte), update_crc_kermit);
    EXPECT_FUNCTION(quint16(quint16, Byte), update_crc_dnp);
    EXPECT_FUNCTION(quint32(quint32, Byte), update_crc_32);
    EXPECT_FUNCTION(quint16(quint16, Byte, Byte), update_crc_sick);
}

TEST(CommonNames, TxPackage) {
    TxPackage package;
    EXPECT_EQ(0, package.totalSize());
    EXPECT_MEMBER(bool(quint8), TxPackage, appendByte);
    EXPECT_MEMBER(bool(quint16), TxPackage, appendWord);
    EXPECT_MEMBER(bool(quint32), TxPackage, appendDWord);
    EXPECT_MEMBER(bool(const QByteArray&), TxPackage, appendString);
    EXPECT_MEMBER(bool(quint8), TxPackage, appendByte2Ascii);
    EXPECT_MEMBER(bool(const QByteArray&), TxPackage, appendSection);
    EXPECT_MEMBER(bool(int), TxPackage, appendLRCByte);
    EXPECT_MEMBER(bool(int), TxPackage, appendLRCAscii);
    EXPECT_MEMBER(bool(int), TxPackage, appendFCSAscii);
    EXPECT_MEMBER(quint8(int) const, TxPackage, calculateFCS);
    EXPECT_MEMBER(bool(int, int), TxPackage, setSectionSize);
    EXPECT_MEMBER(int(int) const, TxPackage, sectionSize);
    EXPECT_MEMBER(int(int) const, TxPackage, sectionStartIndex);
    EXPECT_MEMBER(int() const, TxPackage, numberOfSections);
    EXPECT_MEMBER(int() const, TxPackage, totalSize);
    EXPECT_MEMBER(const Byte*() const, TxPackage, data);
    EXPECT_MEMBER(QByteArray() const, TxPackage, byteArrayData);
    EXPECT_MEMBER(QString() const, TxPackage, toString);
    EXPECT_MEMBER(void(), TxPackage, clearAll);
}

}  // namespace
