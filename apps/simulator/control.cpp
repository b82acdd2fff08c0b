#include "apps/simulator/control.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "apps/simulator/pccc/data_table_text.h"
#include "apps/simulator/tags/tag_text.h"

namespace sim {

namespace {

const int kMaxDelayMs = 3600000;
const int kMaxLine = 1 << 20;

bool setFault(const QString& argument, FaultPlan& faults, QString* problem) {
    if (argument == "none") {
        faults.clear();
        return true;
    }
    return faults.add(argument, problem);
}

bool setDelay(const QString& argument, Server& server, QString* problem) {
    bool ok = false;
    const int ms = argument.toInt(&ok);
    if (!ok || ms < 0 || ms > kMaxDelayMs) {
        *problem = QString("'%1' is no delay in milliseconds").arg(argument);
        return false;
    }
    server.setDelay(ms);
    return true;
}

/// Commands without an argument; false when it is none of them.
bool runPlain(const QString& command, const ControlTargets& targets, bool* ok, QString* problem) {
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
        *ok = targets.server->up(problem);
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
    QString problem;
    QString value;
    bool ok = true;
    *quit = command == "quit";
    if (command == "fault") {
        ok = setFault(argument, *targets.faults, &problem);
    } else if (command == "set") {
        ok = isFileAddress(argument) ? setFileFromText(argument, *targets.files, &problem)
                                     : setTagFromText(argument, *targets.tags, &problem);
    } else if (command == "get") {
        ok = isFileAddress(argument) ? fileText(argument, *targets.files, &value, &problem)
                                     : tagText(argument, *targets.tags, &value, &problem);
    } else if (command == "delay") {
        ok = setDelay(argument, *targets.server, &problem);
    } else if (!*quit && !runPlain(trimmed, targets, &ok, &problem)) {
        ok = false;
        problem = QString("there is no command '%1'").arg(trimmed);
    }
    if (!ok) {
        return "error: " + problem;
    }
    return value.isNull() ? "ok" : "ok " + value;
}

Control::Control(const ControlTargets& given)
    : targets(given), readable(STDIN_FILENO, QSocketNotifier::Read) {
    connect(&readable, &QSocketNotifier::activated, this, [this] { readSome(); });
}

void Control::readSome() {
    char buffer[4096];
    const ssize_t got = read(STDIN_FILENO, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (got <= 0 || text.size() > kMaxLine) {
        readable.setEnabled(false);
        emit quit();
        return;
    }
    text.append(buffer, int(got));
    for (int end = text.indexOf('\n'); end >= 0; end = text.indexOf('\n')) {
        const QString line = QString::fromUtf8(text.left(end));
        text.remove(0, end + 1);
        bool leave = false;
        const QString answer = runCommand(line, targets, &leave);
        std::printf("%s\n", qPrintable(answer));
        std::fflush(stdout);
        if (leave) {
            emit quit();
            return;
        }
    }
}

}  // namespace sim
