#include "apps/simulator/request_log.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace sim {

namespace {

void appendHexCode(std::string& line, unsigned value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*X", digits, value);
    line += text;
}

/// Bytes from the network as a JSON string: what is not plain ASCII is written as its Latin-1 code.
void appendString(std::string& line, const std::string& text) {
    line += '"';
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            line += '\\';
            line += c;
        } else if (byte < 0x20 || byte > 0x7E) {
            line += "\\u";
            appendHexCode(line, byte, 4);
        } else {
            line += c;
        }
    }
    line += '"';
}

void appendKey(std::string& line, const char* key) {
    line += line.back() == '{' ? "\"" : ",\"";
    line += key;
    line += "\":";
}

void appendNames(std::string& line, const Exchange& exchange) {
    appendKey(line, "command");
    const char* command = encapCommandName(exchange.command);
    if (*command != '?') {
        appendString(line, command);
    } else {
        line += "\"0x";
        appendHexCode(line, exchange.command, 4);
        line += '"';
    }
    if (exchange.service < 0) {
        return;
    }
    if (exchange.unconnectedSend) {
        appendKey(line, "route");
        line += '"';
        appendHex(line, exchange.route);
        line += '"';
    }
    appendKey(line, "service");
    if (const char* service = cipServiceName(uint8_t(exchange.service), exchange.path.classId)) {
        appendString(line, service);
    } else {
        line += "\"0x";
        appendHexCode(line, unsigned(exchange.service), 2);
        line += '"';
    }
}

void appendAccess(std::string& line, const Exchange& exchange) {
    if (exchange.path.isSymbolic()) {
        appendKey(line, "tag");
        appendString(line, exchange.path.text());
    }
    if (exchange.access.type >= 0) {
        appendKey(line, "type");
        const ValueType* type = findType(uint16_t(exchange.access.type));
        if (type) {
            appendString(line, type->name);
        } else {
            line += "\"0x";
            appendHexCode(line, unsigned(exchange.access.type), 4);
            line += '"';
        }
    }
    if (exchange.access.count >= 0) {
        appendKey(line, "count");
        line += std::to_string(exchange.access.count);
    }
    if (exchange.service == kWriteTag) {
        appendKey(line, "data");
        line += '"';
        appendHex(line, exchange.written);
        line += '"';
    }
}

void appendPcccStatus(std::string& line, const PcccStatus& status) {
    appendKey(line, "sts");
    line += '"';
    appendHexCode(line, status.sts, 2);
    if (status.sts == kPcccExtended) {
        line += '/';
        appendHexCode(line, status.ext, 2);
    }
    line += '"';
}

void appendPccc(std::string& line, const PcccCommand& pccc) {
    if (pccc.function >= 0) {
        appendKey(line, "function");
        if (const char* name = pcccFunctionName(uint8_t(pccc.function))) {
            appendString(line, name);
        } else {
            line += "\"0x";
            appendHexCode(line, unsigned(pccc.function), 2);
            line += '"';
        }
    }
    if (!pccc.address.empty()) {
        appendKey(line, "address");
        appendString(line, pccc.address);
    }
    if (pccc.count >= 0) {
        appendKey(line, "count");
        line += std::to_string(pccc.count);
    }
    if (!pccc.written.empty()) {
        appendKey(line, "data");
        line += '"';
        appendHex(line, pccc.written);
        line += '"';
    }
    appendPcccStatus(line, pccc.status);
}

void appendStatus(std::string& line, const Exchange& exchange) {
    appendKey(line, "encap_status");
    line += '"';
    appendHexCode(line, exchange.encapStatus, 4);
    line += '"';
    if (exchange.service >= 0) {
        appendKey(line, "status");
        line += '"';
        appendHexCode(line, exchange.status.general, 2);
        if (exchange.status.hasExtended) {
            line += '/';
            appendHexCode(line, exchange.status.extended, 4);
        }
        line += '"';
    }
    if (exchange.note) {
        appendKey(line, "note");
        appendString(line, exchange.note);
    }
}

void appendFaults(std::string& line, const Exchange& exchange) {
    if (exchange.faults.empty()) {
        return;
    }
    appendKey(line, "faults");
    char before = '[';
    for (const Fault* fault : exchange.faults) {
        line += before;
        appendString(line, fault->text);
        before = ',';
    }
    line += ']';
}

double millisecondsNow() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

void buildLine(std::string& line, double ms, const std::string& peer, const Exchange& exchange,
               const Delivery* delivery) {
    char number[32];
    std::snprintf(number, sizeof number, "%.3f", ms);
    line = "{\"ms\":";
    line += number;
    appendKey(line, "peer");
    appendString(line, peer);
    appendNames(line, exchange);
    appendAccess(line, exchange);
    if (exchange.hasPccc) {
        appendPccc(line, exchange.pccc);
    }
    appendStatus(line, exchange);
    appendFaults(line, exchange);
    appendKey(line, "request");
    line += '"';
    appendHex(line, exchange.request);
    line += '"';
    appendKey(line, "reply");
    line += '"';
    if (!delivery) {
        appendHex(line, exchange.reply);
    } else {
        for (const Segment& segment : delivery->segments) {
            appendHex(line, segment.bytes);
        }
    }
    line += "\"}";
}

}  // namespace

std::string requestLogLine(double ms, const std::string& peer, const Exchange& exchange,
                           const Delivery* delivery) {
    std::string line;
    buildLine(line, ms, peer, exchange, delivery);
    return line;
}

RequestLog::~RequestLog() {
    if (m_file >= 0) {
        ::close(m_file);
    }
}

bool RequestLog::open(const QString& path, QString* error) {
    m_file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC,
                    0644);
    if (m_file < 0) {
        *error = QString("log '%1': %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
    }
    return m_file >= 0;
}

void RequestLog::write(const std::string& peer, const Exchange& exchange,
                       const Delivery* delivery) {
    if (m_file < 0) {
        return;
    }
    buildLine(m_line, millisecondsNow(), peer, exchange, delivery);
    m_line += '\n';
    size_t at = 0;
    while (at < m_line.size()) {
        const ssize_t written = ::write(m_file, m_line.data() + at, m_line.size() - at);
        if (written < 0 && errno != EINTR) {
            return;
        }
        at += written > 0 ? size_t(written) : 0;
    }
}

}  // namespace sim
