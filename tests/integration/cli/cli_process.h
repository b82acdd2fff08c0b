#ifndef TESTS_INTEGRATION_CLI_CLI_PROCESS_H
#define TESTS_INTEGRATION_CLI_CLI_PROCESS_H

#include <sys/types.h>

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <vector>

/// What one run of a program came to.
struct CliResult {
    int exitCode = -1;  ///< -1 when it ended by a signal or not in time
    int signal = 0;     ///< the signal that ended it
    QByteArray out;
    QByteArray err;
};

/// How long a test waits for what must come: enough for a sanitizer's build on a busy machine.
const int kCliWaitMs = 60000;

/// The words that run `program`: itself, after the emulator's command where the test itself runs
/// under one (MICRO800_EMULATOR). Texts in the system's encoding.
std::vector<QByteArray> programWords(const QString& program, const QStringList& arguments);

/// Pointers to the texts, and a null; as the exec functions want them.
std::vector<char*> pointersTo(std::vector<QByteArray>* texts);

/// One child process. Unlike QProcess it starts its program under an emulator as well, and it never
/// signals a process that it did not start.
class CliProcess {
 public:
    CliProcess() = default;
    ~CliProcess();
    CliProcess(const CliProcess&) = delete;
    CliProcess& operator=(const CliProcess&) = delete;

    /// Starts the program. `output` (when not negative) takes
    /// its standard output in place of finish(). False when it could not be started.
    bool start(const QString& program, const QStringList& arguments,
               const QProcessEnvironment& environment, const QString& directory = QString(),
               int output = -1);
    /// What it finds on its standard input; before start().
    void setInput(const QString& file) { input = file; }

    /// Waits until it has printed `text` `times` times, on either stream.
    bool hasPrinted(const char* text, int times = 1);
    /// What it has printed so far, as far as hasPrinted() has looked.
    const QByteArray& printed() const { return result.out; }
    const QByteArray& complained() const { return result.err; }
    void signal(int number);
    /// -1 when it has ended or never started.
    pid_t processId() const { return pid; }
    /// Closes our end of its standard output.
    void closeOutput();
    /// Waits for its end.
    CliResult finish();

 private:
    bool spawnWith(const QString& program, const QStringList& arguments,
                   const QProcessEnvironment& environment, const QString& directory, int output,
                   int errors);
    void take(int ms);
    bool hasEnded(int* status);

    pid_t pid = -1;
    QString input = QStringLiteral("/dev/null");
    int outDescriptor = -1;
    int errDescriptor = -1;
    CliResult result;
};

#endif
