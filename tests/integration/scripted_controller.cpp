#include "integration/scripted_controller.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace {

// Offsets in an encapsulated message (CIP Networks Library Vol. 2, 2-3 and 2-4).
const int kHeaderSize = 24;
const int kSession = 4;
const int kUnconnectedRequest = 40;  // after the heads of a null address and a data item
const int kSequence = 44;            // after a connected address and the head of a data item
const int kConnectedRequest = 46;

const int kRegisterSession = 0x65;
const int kSendRRData = 0x6F;
const int kSendUnitData = 0x70;
const char kForwardOpen = 0x54;

/// How long a poll waits before it looks whether the test is over.
const int kLookMs = 10;

int word(const QByteArray& bytes, int at) {
    return static_cast<unsigned char>(bytes.at(at)) | static_cast<unsigned char>(bytes.at(at + 1))
                                                          << 8;
}

QByteArray littleEndian(int value) {
    QByteArray bytes;
    bytes.append(static_cast<char>(value)).append(static_cast<char>(value >> 8));
    return bytes;
}

QByteArray message(int command, const QByteArray& session, const QByteArray& body) {
    return littleEndian(command) + littleEndian(body.size()) + session + QByteArray(16, 0) + body;
}

/// Connection ids 1 and 2, serial numbers as they came, no packet intervals.
QByteArray openReply(const QByteArray& request) {
    return QByteArray::fromHex("d40000000100000002000000") + request.mid(6 + 10, 8) +
           QByteArray(10, 0);
}

}  // namespace

ScriptedController::ScriptedController(const Service& service)
    : ScriptedController(service, [](const QByteArray& answer) { return answer; }) {}

ScriptedController::ScriptedController(const Service& service, const Distortion& distortion)
    : connected(service), asSent(distortion), listener(-1), tcpPort(0), ended(false) {
    start();
}

ScriptedController::ScriptedController(const Script& everything)
    : script(everything), listener(-1), tcpPort(0), ended(false) {
    start();
}

void ScriptedController::start() {
    listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = sockaddr_in();
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), size));
    EXPECT_EQ(0, listen(listener, 5));
    EXPECT_EQ(0, getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size));
    tcpPort = ntohs(address.sin_port);
    thread = std::thread([this] { serve(); });
}

ScriptedController::~ScriptedController() {
    ended = true;
    thread.join();
    close(listener);
}

int ScriptedController::countRequests(int command) const {
    const std::lock_guard<std::mutex> lock(mutex);
    return command == 0 ? commands.size() : commands.count(command);
}

void ScriptedController::serve() {
    while (!ended) {
        pollfd wait = {listener, POLLIN, 0};
        if (poll(&wait, 1, kLookMs) == 1) {
            const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            const int on = 1;
            (void)setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            serveClient(client);
            close(client);
        }
    }
}

void ScriptedController::serveClient(int client) {
    QByteArray pending;
    while (!ended) {
        pollfd wait = {client, POLLIN, 0};
        if (poll(&wait, 1, kLookMs) != 1) {
            continue;
        }
        char piece[4096];
        const ssize_t got = recv(client, piece, sizeof piece, 0);
        if (got < 1) {
            return;
        }
        pending.append(piece, static_cast<int>(got));
        while (pending.size() >= kHeaderSize && pending.size() >= kHeaderSize + word(pending, 2)) {
            const QByteArray request = pending.left(kHeaderSize + word(pending, 2));
            pending.remove(0, request.size());
            if (!answer(client, request)) {
                return;
            }
        }
    }
}

/// False when the connection ends with it.
bool ScriptedController::answer(int client, const QByteArray& request) {
    const Answer answer = answerTo(request);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        commands << word(request, 0);
    }
    for (int i = 0; i < answer.pieces.size(); ++i) {
        if (i > 0 && answer.pauseUs > 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(answer.pauseUs));
        }
        const QByteArray& piece = answer.pieces.at(i);
        (void)!send(client, piece.constData(), static_cast<size_t>(piece.size()), MSG_NOSIGNAL);
    }
    return !answer.hangsUp;
}

ScriptedController::Answer ScriptedController::answerTo(const QByteArray& request) const {
    if (script.answer) {
        return script.answer(request);
    }
    Answer answer;
    const QByteArray own = ownAnswer(request);
    if (!own.isEmpty()) {
        answer.pieces << own;
    }
    return answer;
}

QByteArray ScriptedController::ownAnswer(const QByteArray& request) const {
    switch (word(request, 0)) {
        case kRegisterSession:
            return message(kRegisterSession, QByteArray::fromHex("11000000"),
                           request.mid(kHeaderSize));
        case kSendRRData: {
            const QByteArray mr = request.mid(kUnconnectedRequest);
            const QByteArray reply =
                mr.at(0) == kForwardOpen
                    ? openReply(mr)
                    : QByteArray(1, static_cast<char>(mr.at(0) | 0x80)) + QByteArray(3, 0);
            return message(kSendRRData, request.mid(kSession, 4),
                           QByteArray::fromHex("0000000000000200"
                                               "00000000"
                                               "b200") +
                               littleEndian(reply.size()) + reply);
        }
        case kSendUnitData:
            return connectedAnswer(request);
        default:
            return QByteArray();
    }
}

QByteArray ScriptedController::connectedAnswer(const QByteArray& request) const {
    const QByteArray reply = connected(request.mid(kConnectedRequest));
    if (reply.isEmpty()) {
        return QByteArray();
    }
    return asSent(message(kSendUnitData, request.mid(kSession, 4),
                          QByteArray::fromHex("0000000000000200"
                                              "a100040002000000"
                                              "b100") +
                              littleEndian(reply.size() + 2) + request.mid(kSequence, 2) + reply));
}
