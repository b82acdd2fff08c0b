#include "soak/trouble.h"

namespace {

/// A fault that is switched on, a command that is given, or both in this order. PCCC faults are
/// left out: the driver sends no PCCC commands.
struct Kind {
    const char* fault;
    const char* command;
};

const char kHang[] = "hang";
const char kDown[] = "down";

const Kind kKinds[] = {
    {"silence", ""},
    {"cut", ""},
    {"cut:10", ""},
    {"reset", ""},
    {"reset:30", ""},
    {"torn:24,5", ""},
    {"torn", ""},
    {"torn-header", ""},
    {"late:50", ""},
    {"late:900x3", ""},
    {"late:1600x2", ""},
    {"repeat", ""},
    {"truncate:30", ""},
    {"wrong-command", ""},
    {"wrong-session", ""},
    {"wrong-connection", ""},
    {"wrong-sequence", ""},
    {"wrong-service", ""},
    {"encap-status:1", ""},
    {"encap-length-long", ""},
    {"encap-length-short", ""},
    {"item-count", ""},
    {"item-length-long", ""},
    {"status:05", ""},
    {"status:FF,2105", ""},
    {"status:05@on=write", ""},
    {"silence@on=write", ""},
    {"additional-status-size", ""},
    {"unknown-type", ""},
    {"string-length-past-end", ""},
    {"short-reply", ""},
    {"refuse-register", "close-peers"},
    {"refuse-open", "reset-peers"},
    {"short-open-reply", "close-peers"},
    {"silence@on=register", "reset-peers"},
    {"silence@on=open", "close-peers"},
    {"late:700@on=any", ""},
    {"", "close-peers"},
    {"", "reset-peers"},
    {"", "drop-connections"},
    {"", kDown},
    {"", kHang},
};

}  // namespace

int Trouble::kinds() {
    return int(sizeof kKinds / sizeof *kKinds);
}

QString Trouble::name(int kind) {
    const QString fault = kKinds[kind].fault;
    return fault.isEmpty() ? QString(kKinds[kind].command) : fault;
}

bool Trouble::begin(int wanted, ClockController* controller) {
    kind = wanted;
    troubled = controller;
    const QString fault = kKinds[kind].fault;
    const QString command = kKinds[kind].command;
    if (command == kHang) {
        troubled->hang();
        return true;
    }
    return (fault.isEmpty() || troubled->command("fault " + fault)) &&
           (command.isEmpty() || troubled->command(command));
}

bool Trouble::end() {
    const QString command = kKinds[kind].command;
    if (command == kHang) {
        troubled->goOn();
    }
    return (command != kDown || troubled->command("up")) && troubled->command("fault none");
}
