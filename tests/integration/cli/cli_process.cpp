#include "integration/cli/cli_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include "support/descriptor.h"

namespace {

/// Reads what is there; closes the descriptor at its end.
void takeFrom(int* descriptor, QByteArray* text) {
    char buffer[4096];
    const ssize_t count = read(*descriptor, buffer, sizeof buffer);
    if (count > 0) {
        text->append(buffer, static_cast<int>(count));
    } else {
        close(*descriptor);
        *descriptor = -1;
    }
}

}  // namespace

std::vector<QByteArray> programWords(const QString& program, const QStringList& arguments) {
    std::vector<QByteArray> words;
    for (const QString& word : QProcess::splitCommand(qEnvironmentVariable("MICRO800_EMULATOR"))) {
        words.push_back(QFile::encodeName(word));
    }
    words.push_back(QFile::encodeName(program));
    for (const QString& argument : arguments) {
        words.push_back(argument.toUtf8());
    }
    return words;
}

std::vector<char*> pointersTo(std::vector<QByteArray>* texts) {
    std::vector<char*> pointers;
    for (QByteArray& text : *texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

CliProcess::~CliProcess() {
    if (pid > 0) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    closeIfOpen(&outDescriptor);
    closeIfOpen(&errDescriptor);
}

bool CliProcess::start(const QString& program, const QStringList& arguments,
                       const QProcessEnvironment& environment, const QString& directory,
                       int output) {
    int out[2] = {-1, output};
    int err[2];
    if ((output < 0 && pipe2(out, O_CLOEXEC) != 0) || pipe2(err, O_CLOEXEC) != 0) {
        return false;
    }
    outDescriptor = out[0];
    errDescriptor = err[0];
    const bool started = spawnWith(program, arguments, environment, directory, out[1], err[1]);
    if (output < 0) {
        close(out[1]);
    }
    close(err[1]);
    return started;
}

bool CliProcess::spawnWith(const QString& program, const QStringList& arguments,
                           const QProcessEnvironment& environment, const QString& directory,
                           int output, int errors) {
    std::vector<QByteArray> words = programWords(program, arguments);
    std::vector<QByteArray> settings;
    for (const QString& setting : environment.toStringList()) {
        settings.push_back(QFile::encodeName(setting));
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, QFile::encodeName(input).constData(),
                                     O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    if (!directory.isEmpty()) {
        posix_spawn_file_actions_addchdir_np(&actions, QFile::encodeName(directory).constData());
    }
    const int failure = posix_spawnp(&pid, words[0].constData(), &actions, nullptr,
                                     pointersTo(&words).data(), pointersTo(&settings).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        pid = -1;
    }
    return failure == 0;
}

void CliProcess::take(int ms) {
    struct pollfd waited[] = {{outDescriptor, POLLIN, 0}, {errDescriptor, POLLIN, 0}};
    poll(waited, 2, ms);
    if (waited[0].revents) {
        takeFrom(&outDescriptor, &result.out);
    }
    if (waited[1].revents) {
        takeFrom(&errDescriptor, &result.err);
    }
}

bool CliProcess::hasPrinted(const char* text, int times) {
    QElapsedTimer clock;
    clock.start();
    while (result.out.count(text) + result.err.count(text) < times) {
        if (clock.elapsed() > kCliWaitMs || (outDescriptor < 0 && errDescriptor < 0)) {
            return false;
        }
        take(100);
    }
    return true;
}

void CliProcess::signal(int number) {
    if (pid > 0) {
        kill(pid, number);
    }
}

void CliProcess::closeOutput() {
    closeIfOpen(&outDescriptor);
}

bool CliProcess::hasEnded(int* status) {
    if (pid <= 0 || waitpid(pid, status, WNOHANG) != pid) {
        return false;
    }
    pid = -1;
    return true;
}

CliResult CliProcess::finish() {
    QElapsedTimer clock;
    clock.start();
    int status = 0;
    while (pid > 0 && clock.elapsed() < kCliWaitMs) {
        take(10);
        if (!hasEnded(&status)) {
            continue;
        }
        while ((outDescriptor >= 0 || errDescriptor >= 0) && clock.elapsed() < 2 * kCliWaitMs) {
            take(1000);
        }
        if (WIFEXITED(status)) {
            result.exitCode = WEXITSTATUS(status);
        } else if (WIFSIGNALED(status)) {
            result.signal = WTERMSIG(status);
        }
    }
    return result;
}
