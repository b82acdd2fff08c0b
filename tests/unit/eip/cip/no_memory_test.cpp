// Without memory every function says so, gives nothing and loses nothing: each of its allocations
// fails once, and then the same call works.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <string>

#include "eip/cip/logix_id_list.h"
#include "eip/cip/logix_services.h"
#include "eip/cip/pccc_requests.h"
#include "eip/cip/pccc_services.h"
#include "eip/cip/unconnected_send.h"
#include "unit/eip/cip/failing_calloc.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

const CipError kNoMemory{1, ENOMEM, 0};
const uint32_t kHandle = 0x77;

const char kForwardOpened[] =
    "D4 00 00 00 | 02 00 00 80 | 01 00 FE 80 | 02 00 1B 50 44 33 22 11 | 80 84 1E 00 80 84 1E 00 "
    "00 00";
const char kPcccInteger[] = "CB 00 00 00 | 07 06 04 89 67 45 23 | 4F 00 34 12 | 42 2A 00";
const char kPcccDone[] = "CB 00 00 00 | 07 06 04 89 67 45 23 | 4F 00 34 12";

class NoMemory : public testing::Test {
 protected:
    NoMemory() : session(NewSession(1000, &transport)), connection(), target() {
        session->sessionHandle = kHandle;
        connection.session = session;
        target.session = session;
    }
    ~NoMemory() override { DeleteSession(session); }

    /// `call` is true when it succeeded; it frees what it got. `allocations`: how many it makes.
    void expect(
        const std::string& name, int allocations, const std::function<bool()>& call,
        const std::function<void()>& prepare = [] {}) {
        for (int before = 0; before < allocations; ++before) {
            prepare();
            const FailingCalloc noMemory(before);
            EXPECT_FALSE(call()) << name << ", allocation " << before;
            EXPECT_TRUE(noMemory.hasFailed()) << name << ", allocation " << before;
            EXPECT_EQ(kNoMemory, lastError()) << name << ", allocation " << before;
        }
        prepare();
        const FailingCalloc memory(allocations);
        EXPECT_TRUE(call()) << name;
        EXPECT_FALSE(memory.hasFailed()) << name;
    }

    /// The reply to the next request, and none from before.
    std::function<void()> unconnected(const char* reply) {
        return [this, reply] {
            transport = ScriptedTransport();
            transport.play(unconnectedReply(kHandle, reply));
        };
    }
    std::function<void()> connected(const char* reply) {
        return [this, reply] {
            transport = ScriptedTransport();
            connection.sequenceCount = 0;
            transport.play(connectedReply(kHandle, 1, reply));
        };
    }

    /// Frees the result of a builder or a service.
    static bool given(void* result) {
        const bool isThere = result != nullptr;
        free(result);
        return isThere;
    }

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Connection connection;
    _PCCC_Target target;
};

TEST_F(NoMemory, Sessions) {
    expect("NewSession", 1, [this] { return given(NewSession(1000, &transport)); });
    expect("_OpenSession", 1, [] { return given(_OpenSession("", 0, 1000)); });
}

TEST_F(NoMemory, Requests) {
    int size = 0;
    _Eip_Item address;
    _Eip_Item data;
    _SetItem(&address, CPF_NULL_ADDRESS, 0);
    _SetItem(&data, CPF_UNCONNECTED_DATA, 1);
    expect("_BuildRequest", 1,
           [&] { return given(_BuildRequest(session, &address, nullptr, &data, "x", 1000)); });
    expect("_BuildMRRequest", 1,
           [&] { return given(_BuildMRRequest(1, CM_PATH, 4, "x", 1, &size)); });
    expect("_BuildLgxReadDataRequest", 1,
           [&] { return given(_BuildLgxReadDataRequest("A", 1, &size)); });
    expect("_BuildLgxWriteDataRequest", 1,
           [&] { return given(_BuildLgxWriteDataRequest("A", LGX_TYPE_SINT, "x", 1, 1, &size)); });
    expect("_BuildLgxReadFragmentRequest", 1,
           [&] { return given(_BuildLgxReadFragmentRequest("A", 1, 0, &size)); });
    expect("_BuildLgxWriteFragmentRequest", 1, [&] {
        return given(_BuildLgxWriteFragmentRequest("A", LGX_TYPE_SINT, "x", 1, 1, 0, &size));
    });
    expect("_BuildPLCReadDataRequest", 1,
           [&] { return given(_BuildPLCReadDataRequest(1, "N7:0", 1, &size)); });
    expect("_BuildPLCWriteWithMaskRequest", 1,
           [&] { return given(_BuildPLCWriteWithMaskRequest(1, "N7:0", 1, 1, &size)); });
}

TEST_F(NoMemory, MessageRouter) {
    int size = 0;
    // The message-router request, the message around it, the copy of the reply.
    expect(
        "_SendMRRequest", 3,
        [&] { return given(_SendMRRequest(session, 1, CM_PATH, 4, "x", 1, &size)); },
        unconnected("81 00 00 00"));
    expect(
        "_UnconnectedSend", 3,
        [&] { return given(_UnconnectedSend(session, 7, 7, "\x01\x00", 2, CM_PATH, 4, &size)); },
        unconnected("81 00 00 00"));
    expect(
        "_ConnectedSend", 2,
        [&] { return given(_ConnectedSend(session, &connection, "\x4C\x00", 2)); },
        connected("CC 00 00 00 C4 00 2A 00 00 00"));
    expect(
        "_GetIdList", 5, [&] { return given(_GetIdList(session, CM_PATH, 4)); },
        unconnected("CB 00 00 00 11 22 33 44"));
}

TEST_F(NoMemory, Connections) {
    expect(
        "_Forward_Open", 4,
        [&] {
            return given(
                _Forward_Open(session, 5, 247, 1, 2, 3, 4, 2, 2000, 0x43F8, 0xA3, ROUTER_PATH, 4));
        },
        unconnected(kForwardOpened));
    const auto open = [this] {
        _Eip_Connection* made = static_cast<_Eip_Connection*>(malloc(sizeof(_Eip_Connection)));
        *made = connection;
        return made;
    };
    expect(
        "_Forward_Close", 3, [&] { return _Forward_Close(open()) == 0; },
        unconnected("CE 00 00 00 | 02 00 1B 50 44 33 22 11 | 00 00"));
    expect("_SendForwardClose", 2, [&] { return _SendForwardClose(open()) > 0; });
}

TEST_F(NoMemory, Logix) {
    expect(
        "_ReadLgxData", 4,
        [&] {
            _LGX_Read* read = _ReadLgxData(session, &connection, "A", 1);
            const bool isThere = read != nullptr;
            _FreeLGXRead(read);
            return isThere;
        },
        connected("CC 00 00 00 C4 00 2A 00 00 00"));
    expect(
        "_ReadLgxData, a part", 4,
        [&] {
            LgxTagRead read("A", 2);
            return _AdvanceLgxRead(session, &connection, &read) == LgxProgress::more;
        },
        connected("CC 00 06 00 C4 00 2A 00 00 00"));
    expect(
        "_WriteLgxData", 3,
        [&] { return _WriteLgxData(session, &connection, "A", LGX_TYPE_SINT, "x", 1) > 0; },
        connected("CD 00 00 00"));
}

TEST_F(NoMemory, Pccc) {
    int size = 0;
    const char request[] = "\x0F\x00\x34\x12";
    const unsigned char route[] = {0x01, 0x00};
    expect(
        "_SendUnConnectedPCCCRequest", 4,
        [&] { return given(_SendUnConnectedPCCCRequest(&target, request, 4, &size)); },
        unconnected(kPcccDone));
    target.routePath = route;
    target.routePathLength = sizeof(route);
    expect(
        "_SendUnConnectedPCCCRequest by a route", 5,
        [&] { return given(_SendUnConnectedPCCCRequest(&target, request, 4, &size)); },
        unconnected(kPcccDone));
    target.routePathLength = 0;
    expect(
        "_SendUnConnectedPCCCRequest by an empty route", 4,
        [&] { return given(_SendUnConnectedPCCCRequest(&target, request, 4, &size)); },
        unconnected(kPcccDone));
    target.routePath = nullptr;
    expect(
        "_ReadPLCData_Ex", 6,
        [&] {
            _PLC_Read* read = _ReadPLCData_Ex(&target, 0x1234, "N7:0", 1);
            const bool isThere = read != nullptr;
            _FreePLCRead(read);
            return isThere;
        },
        unconnected(kPcccInteger));
    target.connection = &connection;
    expect(
        "_SendConnectedPCCCRequest", 4,
        [&] { return given(_SendConnectedPCCCRequest(&target, request, 4, &size)); },
        connected(kPcccDone));
}

}  // namespace
