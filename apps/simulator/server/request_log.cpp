#include "apps/simulator/server/request_log.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace sim {

namespace {

void appendHexCode(unsigned value, int digits, std::string* line) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*X", digits, value);
    *line += text;
}

/// Bytes from the network as a JSON string: what is not plain ASCII is written as its Latin-1 code.
void appendString(const std::string& text, std::string* line) {
    *line += '"';
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            *line += '\\';
            *line += c;
        } else if (byte < 0x20 || byte > 0x7E) {
            *line += "\\u";
            appendHexCode(byte, 4, line);
        } else {
            *line += c;
        }
    }
    *line += '"';
}

void appendKey(const char* key, std::string* line) {
    *line += line->back() == '{' ? "\"" : ",\"";
    *line += key;
    *line += "\":";
}

void appendNames(const Exchange& exchange, std::string* line) {
    appendKey("command", line);
    const char* command = encapCommandName(exchange.command);
    if (*command != '?') {
        appendString(command, line);
    } else {
        *line += "\"0x";
        appendHexCode(exchange.command, 4, line);
        *line += '"';
    }
    if (exchange.service < 0) {
        return;
    }
    if (exchange.unconnectedSend) {
        appendKey("route", line);
        *line += '"';
        appendHex(exchange.route, line);
        *line += '"';
    }
    appendKey("service", line);
    if (const char* service = cipServiceName(uint8_t(exchange.service), exchange.path.classId)) {
        appendString(service, line);
    } else {
        *line += "\"0x";
        appendHexCode(unsigned(exchange.service), 2, line);
        *line += '"';
    }
}

void appendAccess(const Exchange& exchange, std::string* line) {
    if (exchange.path.isSymbolic()) {
        appendKey("tag", line);
        appendString(exchange.path.text(), line);
    }
    if (exchange.access.type >= 0) {
        appendKey("type", line);
        const ValueType* type = findType(uint16_t(exchange.access.type));
        if (type) {
            appendString(type->name, line);
        } else {
            *line += "\"0x";
            appendHexCode(unsigned(exchange.access.type), 4, line);
            *line += '"';
        }
    }
    if (exchange.access.count >= 0) {
        appendKey("count", line);
        *line += std::to_string(exchange.access.count);
    }
    if (exchange.access.offset >= 0) {
        appendKey("offset", line);
        *line += std::to_string(exchange.access.offset);
    }
    if (writesTag(exchange.service)) {
        appendKey("data", line);
        *line += '"';
        appendHex(exchange.written, line);
        *line += '"';
    }
}

void appendPcccStatus(const PcccStatus& status, std::string* line) {
    appendKey("sts", line);
    *line += '"';
    appendHexCode(status.sts, 2, line);
    if (status.sts == kPcccExtended) {
        *line += '/';
        appendHexCode(status.ext, 2, line);
    }
    *line += '"';
}

void appendPccc(const PcccCommand& pccc, std::string* line) {
    if (pccc.function >= 0) {
        appendKey("function", line);
        if (const char* name = pcccFunctionName(uint8_t(pccc.function))) {
            appendString(name, line);
        } else {
            *line += "\"0x";
            appendHexCode(unsigned(pccc.function), 2, line);
            *line += '"';
        }
    }
    if (!pccc.address.empty()) {
        appendKey("address", line);
        appendString(pccc.address, line);
    }
    if (pccc.count >= 0) {
        appendKey("count", line);
        *line += std::to_string(pccc.count);
    }
    if (!pccc.written.empty()) {
        appendKey("data", line);
        *line += '"';
        appendHex(pccc.written, line);
        *line += '"';
    }
    appendPcccStatus(pccc.status, line);
}

void appendStatus(const Exchange& exchange, std::string* line) {
    appendKey("encap_status", line);
    *line += '"';
    appendHexCode(exchange.encapStatus, 4, line);
    *line += '"';
    if (exchange.service >= 0) {
        appendKey("status", line);
        *line += '"';
        appendHexCode(exchange.status.general, 2, line);
        if (exchange.status.hasExtended) {
            *line += '/';
            appendHexCode(exchange.status.extended, 4, line);
        }
        *line += '"';
    }
    if (exchange.note) {
        appendKey("note", line);
        appendString(exchange.note, line);
    }
}

void appendFaults(const Exchange& exchange, std::string* line) {
    if (exchange.faults.empty()) {
        return;
    }
    appendKey("faults", line);
    char before = '[';
    for (const Fault* fault : exchange.faults) {
        *line += before;
        appendString(fault->text, line);
        before = ',';
    }
    *line += ']';
}

double millisecondsNow() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

void buildLine(double ms, const std::string& peer, const Exchange& exchange,
               const Delivery* delivery, std::string* line) {
    char number[32];
    std::snprintf(number, sizeof number, "%.3f", ms);
    *line = "{\"ms\":";
    *line += number;
    appendKey("peer", line);
    appendString(peer, line);
    appendNames(exchange, line);
    appendAccess(exchange, line);
    if (exchange.hasPccc) {
        appendPccc(exchange.pccc, line);
    }
    appendStatus(exchange, line);
    appendFaults(exchange, line);
    appendKey("request", line);
    *line += '"';
    appendHex(exchange.request, line);
    *line += '"';
    appendKey("reply", line);
    *line += '"';
    if (!delivery) {
        appendHex(exchange.reply, line);
    } else {
        for (const Segment& segment : delivery->segments) {
            appendHex(segment.bytes, line);
        }
    }
    *line += "\"}";
}

}  // namespace

std::string requestLogLine(double ms, const std::string& peer, const Exchange& exchange,
                           const Delivery* delivery) {
    std::string line;
    buildLine(ms, peer, exchange, delivery, &line);
    return line;
}

RequestLog::~RequestLog() {
    if (file >= 0) {
        ::close(file);
    }
}

bool RequestLog::open(const QString& path, QString* problem) {
    file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC,
                  0644);
    if (file < 0) {
        *problem = QString("log '%1': %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
    }
    return file >= 0;
}

void RequestLog::write(const std::string& peer, const Exchange& exchange,
                       const Delivery* delivery) {
    if (file < 0) {
        return;
    }
    buildLine(millisecondsNow(), peer, exchange, delivery, &line);
    line += '\n';
    size_t at = 0;
    while (at < line.size()) {
        const ssize_t written = ::write(file, line.data() + at, line.size() - at);
        if (written < 0 && errno != EINTR) {
            return;
        }
        at += written > 0 ? size_t(written) : 0;
    }
}

}  // namespace sim
