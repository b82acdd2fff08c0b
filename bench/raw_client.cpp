#include "bench/raw_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

QByteArray hex(const char* text) {
    return QByteArray::fromHex(text);
}

QByteArray word(int value) {
    QByteArray bytes;
    bytes.append(char(value & 0xFF));
    bytes.append(char(value >> 8 & 0xFF));
    return bytes;
}

/// Encapsulation header (CIP Networks Library Vol. 2, 2-3) and what follows it.
QByteArray message(int command, const QByteArray& session, const QByteArray& body) {
    return word(command) + word(body.size()) + session + QByteArray(16, 0) + body;
}

}  // namespace

RawClient::RawClient(quint16 port, quint16 number)
    : descriptor(::socket(AF_INET, SOCK_STREAM, 0)), sequence(0), session(4, 0) {
    sockaddr_in address;
    std::memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        std::perror("connect");
        std::exit(1);
    }
    session = exchange(message(0x65, session, hex("01000000"))).mid(4, 4);
    // Forward Open to the connection manager: class 3, path to the message router.
    const QByteArray open = hex("54022006240105f7"  // service, path, priority, ticks
                                "02000080 0100fe80") +
                            word(number) +
                            hex(                           // connection ids, serial number
                                "1b50 44332211 02 000000"  // originator, time-out multiplier
                                "80841e00 f843 80841e00 f843 a3 02 20022401");
    const QByteArray reply = exchange(message(
        0x6F, session, QByteArray(6, 0) + hex("0200 0000 0000 b200") + word(open.size()) + open));
    if (reply.size() < 52 || reply.at(42) != 0) {
        std::fprintf(stderr, "driver_bench: the raw client's Forward Open was refused\n");
        std::exit(1);
    }
    connection = reply.mid(44, 4);
}

RawClient::~RawClient() {
    close(descriptor);
}

bool RawClient::send(const QByteArray& request) {
    return ::send(descriptor, request.constData(), size_t(request.size()), MSG_NOSIGNAL) ==
           request.size();
}

QByteArray RawClient::receive() {
    QByteArray reply(1024, 0);
    const ssize_t got = recv(descriptor, reply.data(), size_t(reply.size()), 0);
    reply.truncate(got > 0 ? int(got) : 0);
    return reply;
}

QByteArray RawClient::exchange(const QByteArray& request) {
    return send(request) ? receive() : QByteArray();
}

bool RawClient::sendRead(const char* name) {
    const int length = int(std::strlen(name));
    QByteArray path = hex("91") + QByteArray(1, char(length)) + name;
    if (length % 2 != 0) {
        path.append('\0');
    }
    const QByteArray service =
        hex("4c") + QByteArray(1, char(path.size() / 2)) + path + hex("0100");
    const QByteArray item = word(++sequence) + service;
    return send(message(0x70, session,
                        QByteArray(6, 0) + hex("0200 a100 0400") + connection + hex("b100") +
                            word(item.size()) + item));
}

bool RawClient::receiveRead() {
    const QByteArray reply = receive();
    return reply.size() == 56 && reply.at(48) == 0 && reply.mid(44, 2) == word(sequence);
}
