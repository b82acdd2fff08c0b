#ifndef TESTS_INTEGRATION_CLI_TERMINAL_H
#define TESTS_INTEGRATION_CLI_TERMINAL_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QProcessEnvironment>
#include <cstring>
#include <vector>

#include "integration/cli/cli_process.h"
#include "support/descriptor.h"

const int kTerminalWaitMs = 30000;

/// The program on a terminal of its own.
class Terminal {
 public:
    Terminal(const QString& program, const QStringList& arguments,
             const QProcessEnvironment& environment, const char* type) {
        struct winsize size = {24, 80, 0, 0};
        std::vector<QByteArray> words = programWords(program, arguments);
        std::vector<QByteArray> settings;
        for (const QString& setting : environment.toStringList()) {
            if (!setting.startsWith("TERM=") && !setting.startsWith("NO_COLOR=")) {
                settings.push_back(setting.toUtf8());
            }
        }
        settings.push_back(QByteArray("TERM=") + type);
        pid = forkpty(&master, nullptr, nullptr, &size);
        if (pid == 0) {
            execvpe(words[0].constData(), pointersTo(&words).data(), pointersTo(&settings).data());
            _exit(127);
        }
        fcntl(master, F_SETFD, FD_CLOEXEC);
        tcgetattr(master, &before);
    }
    ~Terminal() {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        closeIfOpen(&master);
    }

    /// Waits until the terminal has received `text`.
    bool shows(const char* text) {
        QElapsedTimer clock;
        clock.start();
        while (!shown.contains(text) && clock.elapsed() < kTerminalWaitMs) {
            take(100);
        }
        return shown.contains(text);
    }
    void press(const char* keys) { ASSERT_GT(write(master, keys, strlen(keys)), 0); }
    void resize(unsigned short rows, unsigned short columns) {
        struct winsize size = {rows, columns, 0, 0};
        ioctl(master, TIOCSWINSZ, &size);
    }
    /// What it has received since the last call.
    QByteArray takeScreen() {
        const QByteArray screen = shown;
        shown.clear();
        return screen;
    }
    /// As when its window is closed.
    void hangUp() { closeIfOpen(&master); }
    void signal(int number) {
        if (pid > 0) {
            kill(pid, number);
        }
    }

    /// The exit code; -1 when the program ended by a signal or not in time.
    int wait() {
        QElapsedTimer clock;
        clock.start();
        int status = 0;
        while (clock.elapsed() < kTerminalWaitMs) {
            take(20);
            if (waitpid(pid, &status, WNOHANG) == pid) {
                pid = -1;
                take(0);
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
        }
        return -1;
    }
    /// Whether the terminal's modes are what they were before the program.
    bool isRestored() const {
        struct termios now;
        return tcgetattr(master, &now) == 0 && now.c_lflag == before.c_lflag &&
               now.c_iflag == before.c_iflag && now.c_oflag == before.c_oflag;
    }

 private:
    void take(int ms) {
        struct pollfd waited = {master, POLLIN, 0};
        while (poll(&waited, 1, ms) > 0 && (waited.revents & POLLIN)) {
            char buffer[4096];
            const ssize_t count = read(master, buffer, sizeof buffer);
            if (count <= 0) {
                return;
            }
            shown.append(buffer, static_cast<int>(count));
            ms = 0;
        }
    }

    int master = -1;
    pid_t pid = -1;
    struct termios before;
    QByteArray shown;
};

#endif
