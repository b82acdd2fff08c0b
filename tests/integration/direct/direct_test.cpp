// The CIP client over a byte stream of the host: a device around a socket, the simulated controller
// at its other end.

#include <errno.h>

#include <QJsonObject>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "eip/cip/cip_error.h"
#include "eip/cip/logix_services.h"
#include "eip/cip_direct_callback.h"
#include "integration/direct/socket_device.h"
#include "support/simulator_process.h"

namespace {

const int kShortMs = 100;   ///< when nothing comes at all
const int kAmpleMs = 1000;  ///< when what comes is less than it should be
const int kLongMs = 10000;  ///< when all of it comes

typedef std::vector<int> Numbers;

class DirectTransport : public testing::Test {
 protected:
    ~DirectTransport() override {
        DeleteConnection(&connection);
        DeleteSession(session);
    }

    /// Starts the controller and gives the client a way to it.
    void start(const QStringList& options) {
        simulator = std::make_unique<SimulatorProcess>(options);
        ASSERT_TRUE(simulator->start()) << simulator->error();
        device = std::make_unique<SocketDevice>(simulator->port());
        ASSERT_TRUE(device->isConnected());
        transport = std::make_unique<CipDirectCallback>(device.get());
        session = NewSession(kLongMs, transport.get());
    }
    void open() {
        ASSERT_EQ(0, _RegisterSession(session)) << cip_err_msg();
        connection = _ConnectPLCOverCNET2(session, 3, 5, 247, 0x80FE0001, 2, 0x501B, 4711, 2, 2000,
                                          _Transport, nullptr, 0);
        ASSERT_NE(nullptr, connection) << cip_err_msg();
    }
    /// A controller with the tag COUNTER, and a connection that is open.
    void openWith(const QStringList& options) {
        start(QStringList{"--tag", "COUNTER:DINT=42", "--tag", "OTHER:DINT=7"} + options);
        if (!HasFatalFailure()) {
            open();
        }
    }

    /// The elements of a DINT tag; empty when it cannot be read.
    Numbers read(const char* tag, uint16_t count = 1) {
        const std::unique_ptr<_LGX_Read, void (*)(_LGX_Read*)> value(
            _ReadLgxData(session, connection, tag, count), _FreeLGXRead);
        Numbers numbers;
        for (int i = 0; value && i < value->count; ++i) {
            numbers.push_back(static_cast<int>(GetLGXValueAsUInt32(value.get(), i)));
        }
        return numbers;
    }
    /// Reads what cannot be read and returns "type number extended" of the error.
    std::string failure() {
        EXPECT_EQ(Numbers(), read("COUNTER"));
        return std::to_string(cip_err_type()) + ' ' + std::to_string(cip_errno()) + ' ' +
               std::to_string(cip_ext_errno());
    }
    static std::string systemError(int number) {
        return std::to_string(CIP_ERR_SYSTEM) + ' ' + std::to_string(number) + " 0";
    }

    std::unique_ptr<SimulatorProcess> simulator;
    std::unique_ptr<SocketDevice> device;
    std::unique_ptr<CipDirectCallback> transport;
    _Eip_Session* session = nullptr;
    _Eip_Connection* connection = nullptr;
};

const char kReceiveTimeout[] = "0 -41 0";

TEST_F(DirectTransport, ReadsAndWritesATag) {
    openWith({});
    ASSERT_NE(nullptr, connection);
    EXPECT_EQ(Numbers{42}, read("COUNTER"));
    const unsigned char value[] = {0xDC, 0x05, 0, 0};
    EXPECT_EQ(1, _WriteLgxData(session, connection, "COUNTER", LGX_TYPE_DINT, value, 1));
    EXPECT_EQ(Numbers{1500}, read("COUNTER"));
    EXPECT_EQ("ok 1500", simulator->command("get COUNTER"));
    EXPECT_EQ(0, _Forward_Close(connection));
    connection = nullptr;
    EXPECT_EQ(24, _UnRegisterSession(session));
    QStringList services;
    for (const QJsonObject& request : simulator->log()) {
        services << request["service"].toString();
    }
    EXPECT_EQ("|ForwardOpen|ReadTag|WriteTag|ReadTag|ForwardClose",
              services.mid(0, 6).join('|').toStdString());
}

TEST_F(DirectTransport, ReadsAnArray) {
    openWith({"--tag", "LONG:DINT[0..99]=1,2,3"});
    ASSERT_NE(nullptr, connection);
    Numbers expected(100, 0);
    expected[0] = 1;
    expected[1] = 2;
    expected[2] = 3;
    EXPECT_EQ(expected, read("LONG", 100));
}

TEST_F(DirectTransport, ARefusalComesThrough) {
    openWith({});
    ASSERT_NE(nullptr, connection);
    EXPECT_EQ(Numbers(), read("NO_SUCH_TAG"));
    EXPECT_STREQ("AB error: 0005H", cip_err_msg());
    EXPECT_EQ(Numbers{42}, read("COUNTER"));
}

TEST_F(DirectTransport, AReplyByteByByteIsWholeForADeviceThatWaits) {
    openWith({"--fault", "torn:1,0@on=any"});
    ASSERT_NE(nullptr, connection);
    EXPECT_EQ(Numbers{42}, read("COUNTER"));
}

TEST_F(DirectTransport, NoReplyToTheRegistration) {
    start({"--fault", "silence@on=register"});
    device->setReadTimeout(kShortMs);
    EXPECT_EQ(-1, _RegisterSession(session));
    EXPECT_STREQ("Internal: timeout", cip_err_msg());
    EXPECT_EQ(0u, session->sessionHandle);
}

TEST_F(DirectTransport, ADeviceThatReadsNothing) {
    openWith({"--fault", "silence@on=read"});
    ASSERT_NE(nullptr, connection);
    device->setReadTimeout(kShortMs);
    EXPECT_EQ(kReceiveTimeout, failure());
    EXPECT_STREQ("Internal: receive timeout", cip_err_msg());
}

TEST_F(DirectTransport, AShortHeader) {
    openWith({"--fault", "truncate:23@on=read"});
    ASSERT_NE(nullptr, connection);
    device->setReadTimeout(kAmpleMs);
    EXPECT_EQ(systemError(ETIMEDOUT), failure());
}

TEST_F(DirectTransport, AShortBody) {
    openWith({"--fault", "truncate:25@on=read"});
    ASSERT_NE(nullptr, connection);
    device->setReadTimeout(kAmpleMs);
    EXPECT_EQ(systemError(ETIMEDOUT), failure());
}

TEST_F(DirectTransport, AHeaderWithoutItsBody) {
    openWith({"--fault", "truncate:24@on=read"});
    ASSERT_NE(nullptr, connection);
    device->setReadTimeout(kAmpleMs);
    EXPECT_EQ(kReceiveTimeout, failure());
}

TEST_F(DirectTransport, APeerThatCloses) {
    for (const char* fault :
         {"cut:0@on=read", "cut:10@on=read", "cut:24@on=read", "cut:30@on=read"}) {
        DeleteConnection(&connection);
        DeleteSession(session);
        session = nullptr;
        openWith({"--fault", fault});
        ASSERT_NE(nullptr, connection);
        EXPECT_EQ(systemError(ECONNRESET), failure()) << fault;
    }
}

TEST_F(DirectTransport, APeerThatIsGoneBeforeTheRequest) {
    openWith({});
    ASSERT_NE(nullptr, connection);
    ASSERT_EQ("ok", simulator->command("close-peers"));
    ASSERT_TRUE(device->isReadable(kLongMs));
    EXPECT_EQ(systemError(ECONNRESET), failure());
}

TEST_F(DirectTransport, ALateReplyIsNotTakenForTheNextOne) {
    openWith({"--fault", "late:1000x1@on=read"});
    ASSERT_NE(nullptr, connection);
    device->setReadTimeout(0);
    EXPECT_EQ(kReceiveTimeout, failure());
    device->setReadTimeout(kLongMs);
    ASSERT_TRUE(device->isReadable(kLongMs));
    EXPECT_EQ(Numbers{7}, read("OTHER"));
}

}  // namespace
