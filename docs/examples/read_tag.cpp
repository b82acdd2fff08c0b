// Reads one whole-number tag of a controller: read_tag HOST PORT TAG
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "eip/cip/cip_error.h"
#include "eip/cip/logix_services.h"
#include "eip/cip_tcp_callback.h"

int main(int argc, char** argv) {
    CipTcpCallback transport;
    const unsigned short port = argc == 4 ? static_cast<unsigned short>(atoi(argv[2])) : 0;
    if (port == 0 || !transport.connect(argv[1], port, 3000)) {
        fprintf(stderr, "%s\n", port ? qPrintable(transport.lastError()) : "HOST PORT TAG?");
        return 1;
    }
    _Eip_Session* session = NewSession(3000, &transport);
    _Eip_Connection* connection = nullptr;
    _LGX_Read* value = nullptr;
    if (_RegisterSession(session) == 0) {
        connection = _ConnectPLCOverCNET2(session, 3, _Priority, _TimeOut_Ticks, 0x80FE0001, 2,
                                          _OriginatorVendorID, static_cast<uint32_t>(getpid()),
                                          _TimeOutMultiplier, 2000, _Transport, nullptr, 0);
    }
    if (connection) {
        value = _ReadLgxData(session, connection, argv[3], 1);
    }
    if (value) {
        printf("%s = %d\n", argv[3], _GetLGXValueAsInteger(value, 0));
    } else {
        fprintf(stderr, "%s\n", cip_err_msg());
    }
    const int exitCode = value ? 0 : 1;
    _FreeLGXRead(value);
    if (connection) {
        _Forward_Close(connection);
    }
    _UnRegisterSession(session);
    DeleteSession(session);
    return exitCode;
}
