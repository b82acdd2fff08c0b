#include "integration/array_controller.h"

#include <unistd.h>

#include <algorithm>

namespace {

const int kWriteTag = 0x4D;
const int kReadFragment = 0x52;
const int kWriteFragment = 0x53;

/// Connection size without the sequence count.
const int kMostBytes = 504 - 2;
/// Message-router reply and data type before values.
const int kReplyHead = 4 + 2;
const int kElementSize = 4;

int byteAt(const QByteArray& bytes, int at) {
    return static_cast<unsigned char>(bytes.at(at));
}

int wordAt(const QByteArray& bytes, int at) {
    return byteAt(bytes, at) | byteAt(bytes, at + 1) << 8;
}

int longAt(const QByteArray& bytes, int at) {
    return wordAt(bytes, at) | wordAt(bytes, at + 2) << 16;
}

QByteArray elementBytes(int value) {
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.append(static_cast<char>(value >> shift));
    }
    return bytes;
}

QByteArray reply(int service, int status) {
    QByteArray bytes(4, 0);
    bytes[0] = static_cast<char>(service | 0x80);
    bytes[2] = static_cast<char>(status);
    return bytes;
}

/// The index that a path 91 01 NAME 00 names after its name.
int indexOf(const QByteArray& bytes, int pathEnd) {
    const int at = 6;
    if (pathEnd <= at) {
        return 0;
    }
    return byteAt(bytes, at) == 0x28 ? byteAt(bytes, at + 1) : wordAt(bytes, at + 2);
}

}  // namespace

ArrayController::ArrayController(int elements)
    : values(static_cast<size_t>(elements)),
      scalar(42),
      delayUs(0),
      scripted([this](const QByteArray& request) { return serve(request); }) {
    int next = 1000;
    for (int& value : values) {
        value = next++;
    }
}

QList<ArrayController::Request> ArrayController::requests() const {
    const std::lock_guard<std::mutex> lock(mutex);
    QList<Request> copy;
    for (const Request& request : seen) {
        copy << request;
    }
    return copy;
}

int ArrayController::count(int service, char tag) const {
    int found = 0;
    for (const Request& request : requests()) {
        found += request.service == service && request.tag == tag ? 1 : 0;
    }
    return found;
}

int ArrayController::value(int index) const {
    const std::lock_guard<std::mutex> lock(mutex);
    return values.at(static_cast<size_t>(index));
}

void ArrayController::setValue(int index, int value) {
    const std::lock_guard<std::mutex> lock(mutex);
    values.at(static_cast<size_t>(index)) = value;
}

QByteArray ArrayController::serve(const QByteArray& bytes) {
    if (bytes.size() > kMostBytes) {
        return QByteArray();
    }
    const int pathEnd = 2 + 2 * byteAt(bytes, 1);
    Request request = {byteAt(bytes, 0), bytes.at(4), indexOf(bytes, pathEnd), 0, -1, 0};
    const bool isWrite = request.service == kWriteTag || request.service == kWriteFragment;
    int at = pathEnd + (isWrite ? 2 : 0);
    request.count = wordAt(bytes, at);
    at += 2;
    if (request.service == kReadFragment || request.service == kWriteFragment) {
        request.offset = longAt(bytes, at);
        at += 4;
    }
    request.bytes = bytes.size() - at;
    usleep(static_cast<useconds_t>(delayUs));
    const std::lock_guard<std::mutex> lock(mutex);
    seen.push_back(request);
    const QByteArray other = otherwise ? otherwise(request) : QByteArray();
    if (!other.isEmpty()) {
        return other;
    }
    return isWrite ? serveWrite(request, bytes.mid(at)) : serveRead(request);
}

QByteArray ArrayController::serveRead(const Request& request) {
    QByteArray all;
    if (request.tag == 'D') {
        all = elementBytes(scalar);
    }
    for (int i = 0; request.tag == 'A' && i < request.count; ++i) {
        all += elementBytes(values.at(static_cast<size_t>(request.index + i)));
    }
    const QByteArray rest = all.mid(std::max(request.offset, 0));
    const int most = (kMostBytes - kReplyHead) / kElementSize * kElementSize;
    return reply(request.service, rest.size() > most ? 6 : 0) + QByteArray::fromHex("c400") +
           rest.left(most);
}

QByteArray ArrayController::serveWrite(const Request& request, const QByteArray& data) {
    const int first = request.index + std::max(request.offset, 0) / kElementSize;
    for (int i = 0; i < data.size() / kElementSize; ++i) {
        int& target = request.tag == 'D' ? scalar : values.at(static_cast<size_t>(first + i));
        target = longAt(data, i * kElementSize);
    }
    return reply(request.service, 0);
}
