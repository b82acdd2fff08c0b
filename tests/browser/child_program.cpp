#include "browser/child_program.h"

#include <signal.h>
#include <sys/prctl.h>

#include <QElapsedTimer>

namespace {

const int kStartMs = 60000;  // on a machine that is busy with other tests
const int kEndMs = 20000;

}  // namespace

ChildProgram::~ChildProgram() {
    if (state() != NotRunning) {
        kill();
        waitForFinished(kEndMs);
    }
}

void ChildProgram::setupChildProcess() {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
}

bool ChildProgram::begin(const QString& program, const QStringList& arguments) {
    setProcessChannelMode(ForwardedErrorChannel);
    start(program, arguments);
    return waitForStarted(kStartMs);
}

QByteArray ChildProgram::lineWith(const QByteArray& text) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < kStartMs) {
        while (canReadLine()) {
            const QByteArray line = readLine();
            if (line.contains(text)) {
                return line.trimmed();
            }
        }
        if (!waitForReadyRead(int(kStartMs - clock.elapsed()))) {
            break;
        }
    }
    return QByteArray();
}

int ChildProgram::end() {
    terminate();
    if (state() != NotRunning && !waitForFinished(kEndMs)) {
        return -1;
    }
    return exitStatus() == NormalExit ? exitCode() : -1;
}

void ChildProgram::signal(int number) const {
    if (state() != NotRunning) {
        ::kill(pid_t(processId()), number);
    }
}
