#include "apps/simulator/control.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "apps/simulator/data_table_text.h"
#include "apps/simulator/tag_text.h"

namespace sim {

namespace {

const int kMaxDelayMs = 3600000;
const int kMaxLine = 1 << 20;

bool setFault(const QString& argument, FaultPlan& faults, QString* error) {
    if (argument == "none") {
        faults.clear();
        return true;
    }
    return faults.add(argument, error);
}

bool setDelay(const QString& argument, Server& server, QString* error) {
    bool ok = false;
    const int ms = argument.toInt(&ok);
    if (!ok || ms < 0 || ms > kMaxDelayMs) {
        *error = QString("'%1' is no delay in milliseconds").arg(argument);
        return false;
    }
    server.setDelay(ms);
    return true;
}

/// Commands without an argument; false when it is none of them.
bool runPlain(const QString& command, const ControlTargets& targets, bool* ok, QString* error) {
    *ok = true;
    if (command == "drop-connections") {
        targets.controller->dropConnections();
    } else if (command == "close-peers") {
        targets.server->closePeers(false);
    } else if (command == "reset-peers") {
        targets.server->closePeers(true);
    } else if (command == "down") {
        targets.server->down();
    } else if (command == "up") {
        *ok = targets.server->up(error);
    } else {
        return false;
    }
    return true;
}

}  // namespace

QString runCommand(const QString& line, const ControlTargets& targets, bool* quit) {
    const QString trimmed = line.trimmed();
    const int blank = trimmed.indexOf(' ');
    const QString command = trimmed.left(blank);
    const QString argument = blank < 0 ? QString() : trimmed.mid(blank + 1).trimmed();
    QString error;
    QString value;
    bool ok = true;
    *quit = command == "quit";
    if (command == "fault") {
        ok = setFault(argument, *targets.faults, &error);
    } else if (command == "set") {
        ok = isFileAddress(argument) ? setFileFromText(argument, *targets.files, &error)
                                     : setTagFromText(argument, *targets.tags, &error);
    } else if (command == "get") {
        ok = isFileAddress(argument) ? fileText(argument, *targets.files, &value, &error)
                                     : tagText(argument, *targets.tags, &value, &error);
    } else if (command == "delay") {
        ok = setDelay(argument, *targets.server, &error);
    } else if (!*quit && !runPlain(trimmed, targets, &ok, &error)) {
        ok = false;
        error = QString("there is no command '%1'").arg(trimmed);
    }
    if (!ok) {
        return "error: " + error;
    }
    return value.isNull() ? "ok" : "ok " + value;
}

Control::Control(const ControlTargets& targets)
    : m_targets(targets), m_readable(STDIN_FILENO, QSocketNotifier::Read) {
    connect(&m_readable, &QSocketNotifier::activated, this, [this] { readSome(); });
}

void Control::readSome() {
    char buffer[4096];
    const ssize_t got = read(STDIN_FILENO, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (got <= 0 || m_text.size() > kMaxLine) {
        m_readable.setEnabled(false);
        emit quit();
        return;
    }
    m_text.append(buffer, int(got));
    for (int end = m_text.indexOf('\n'); end >= 0; end = m_text.indexOf('\n')) {
        const QString line = QString::fromUtf8(m_text.left(end));
        m_text.remove(0, end + 1);
        bool leave = false;
        const QString answer = runCommand(line, m_targets, &leave);
        std::printf("%s\n", qPrintable(answer));
        std::fflush(stdout);
        if (leave) {
            emit quit();
            return;
        }
    }
}

}  // namespace sim
