#include "support/simulator_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "support/descriptor.h"

extern char** environ;

namespace {

const int kStartMs = 20000;  // under an emulator or a sanitizer on a loaded machine
const int kAnswerMs = 10000;
const int kStopMs = 10000;
const int kLogPollMs = 2;

/// The two ends of a stream, both closed when a program is executed.
struct Stream {
    int ours = -1;
    int theirs = -1;
    bool open() {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            return false;
        }
        ours = ends[0];
        theirs = ends[1];
        return true;
    }
};

/// Starts the program; `errors` below 0 leaves it our standard error. -1 when it does not start.
pid_t spawn(const QStringList& arguments, int input, int output, int errors) {
    std::vector<QByteArray> texts = {QFile::encodeName(SimulatorProcess::program())};
    for (const QString& argument : arguments) {
        texts.push_back(argument.toLocal8Bit());
    }
    std::vector<char*> argv;
    for (QByteArray& text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    if (errors >= 0) {
        posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    }
    pid_t pid = -1;
    const int failure = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    errno = failure;
    return failure == 0 ? pid : -1;
}

/// Appends what can be read within the time. 1 for bytes, 0 for the end, -1 when the time is up.
int readSome(int fd, QByteArray* text, qint64 timeoutMs) {
    pollfd ready = {fd, POLLIN, 0};
    const int polled = poll(&ready, 1, int(qMax<qint64>(timeoutMs, 0)));
    if (polled < 0 && errno == EINTR) {
        return 1;
    }
    if (polled <= 0) {
        return -1;
    }
    char buffer[4096];
    const ssize_t got = read(fd, buffer, sizeof buffer);
    if (got > 0) {
        text->append(buffer, int(got));
    }
    return got > 0 ? 1 : 0;
}

/// The exit code of a process that has closed its standard output, and so is about to end.
int exitCode(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

SimulatorProcess::SimulatorProcess(const QStringList& arguments) : ownArguments(arguments) {}

SimulatorProcess::~SimulatorProcess() {
    kill();
}

QString SimulatorProcess::program() {
    return qEnvironmentVariableIsSet("MICRO800_SIM") ? qEnvironmentVariable("MICRO800_SIM")
                                                     : QString(SIMULATOR_PROGRAM);
}

bool SimulatorProcess::start(quint16 port) {
    if (port == 0) {
        if (!reserved) {
            reserved.reset(new ReservedPort);
        }
        port = reserved->port();
    }
    QStringList arguments = ownArguments;
    arguments << "--port" << QString::number(port) << "--stdin";
    if (logging) {
        arguments << "--log" << logPath();
    }
    Stream input;
    Stream output;
    if (process >= 0 || !input.open() || !output.open()) {
        problem = process >= 0 ? "it is running already" : std::strerror(errno);
        return false;
    }
    process = spawn(arguments, input.theirs, output.theirs, -1);
    const int failure = errno;
    ::close(input.theirs);
    ::close(output.theirs);
    inDescriptor = input.ours;
    outDescriptor = output.ours;
    pending.clear();
    if (process < 0) {
        closeStreams();
        problem = program().toStdString() + ": " + std::strerror(failure);
        return false;
    }
    QByteArray line;
    bool ok = readLine(&line, kStartMs);
    printedPort = line.toUShort(&ok);
    if (!ok) {
        problem = "it printed '" + line.toStdString() + "' instead of its port";
        kill();
    }
    return ok;
}

bool SimulatorProcess::restart() {
    kill();
    return start(printedPort);
}

int SimulatorProcess::stop(int signal) {
    if (process < 0) {
        return -1;
    }
    ::kill(process, signal);
    return collect(kStopMs);
}

void SimulatorProcess::kill() {
    if (process >= 0) {
        ::kill(process, SIGKILL);
        collect(kStopMs);
    }
}

int SimulatorProcess::collect(int timeoutMs) {
    QElapsedTimer waited;
    waited.start();
    QByteArray ignored;
    int state = 1;
    while (state > 0) {
        state = readSome(outDescriptor, &ignored, timeoutMs - waited.elapsed());
    }
    if (state < 0) {
        problem = "it did not end in time";
        ::kill(process, SIGKILL);
    }
    const int code = exitCode(process);
    process = -1;
    closeStreams();
    return state < 0 ? -1 : code;
}

void SimulatorProcess::closeStreams() {
    closeIfOpen(&inDescriptor);
    closeIfOpen(&outDescriptor);
}

bool SimulatorProcess::readLine(QByteArray* line, int timeoutMs) {
    QElapsedTimer waited;
    waited.start();
    int end = pending.indexOf('\n');
    while (end < 0) {
        if (readSome(outDescriptor, &pending, timeoutMs - waited.elapsed()) <= 0) {
            return false;
        }
        end = pending.indexOf('\n');
    }
    *line = pending.left(end);
    pending.remove(0, end + 1);
    return true;
}

std::string SimulatorProcess::command(const QString& line) {
    const QByteArray text = line.toUtf8() + '\n';
    if (process < 0 ||
        send(inDescriptor, text.constData(), size_t(text.size()), MSG_NOSIGNAL) != text.size()) {
        problem = "it takes no command";
        return std::string();
    }
    QByteArray answer;
    if (!readLine(&answer, kAnswerMs)) {
        problem = "it did not answer '" + line.toStdString() + "'";
    }
    return answer.toStdString();
}

QList<QJsonObject> SimulatorProcess::log() const {
    QList<QJsonObject> requests;
    QFile file(logPath());
    if (!file.open(QIODevice::ReadOnly)) {
        return requests;
    }
    QByteArray text = file.readAll();
    text.truncate(text.lastIndexOf('\n') + 1);  // a line may be in the middle of being written
    for (const QByteArray& line : text.split('\n')) {
        if (!line.isEmpty()) {
            requests.append(QJsonDocument::fromJson(line).object());
        }
    }
    return requests;
}

bool SimulatorProcess::waitForLog(int count, const std::function<bool(const QJsonObject&)>& such,
                                  int timeoutMs) const {
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        int found = 0;
        for (const QJsonObject& request : log()) {
            found += such(request) ? 1 : 0;
        }
        if (found >= count || waited.elapsed() > timeoutMs) {
            return found >= count;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(kLogPollMs));
    }
}

int SimulatorProcess::run(const QStringList& arguments, QByteArray* output, QByteArray* errors) {
    Stream out;
    Stream err;
    int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing < 0 || !out.open() || !err.open()) {
        return -1;
    }
    const pid_t pid = spawn(arguments, nothing, out.theirs, err.theirs);
    closeIfOpen(&nothing);
    closeIfOpen(&out.theirs);
    closeIfOpen(&err.theirs);
    QElapsedTimer waited;
    waited.start();
    int state = pid < 0 ? -1 : 1;
    while (state > 0) {
        state = readSome(err.ours, errors, kStartMs - waited.elapsed());
    }
    while (state == 0 && readSome(out.ours, output, kStartMs - waited.elapsed()) > 0) {
    }
    closeIfOpen(&out.ours);
    closeIfOpen(&err.ours);
    if (pid < 0) {
        return -1;
    }
    if (state < 0) {
        ::kill(pid, SIGKILL);
    }
    return exitCode(pid);
}
