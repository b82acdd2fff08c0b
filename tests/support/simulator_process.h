#ifndef TESTS_SUPPORT_SIMULATOR_PROCESS_H
#define TESTS_SUPPORT_SIMULATOR_PROCESS_H

#include <signal.h>
#include <sys/types.h>

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "support/reserved_port.h"

/// A simulated controller in a process of its own, for tests that talk to it over TCP.
///
///     SimulatorProcess simulator({"--tag", "COUNTER:DINT=42"});
///     ASSERT_TRUE(simulator.start()) << simulator.error();
///     connectTo(simulator.port());
///     EXPECT_EQ("ok", simulator.command("fault late:1500x1"));
///     EXPECT_EQ("ok 42", simulator.command("get COUNTER"));
///     EXPECT_TRUE(simulator.waitForLog(1, [](const QJsonObject& request) {
///         return request["service"] == "ReadTag" && request["tag"] == "COUNTER";
///     }));
///
/// The program is the one that was built with the tests; the environment variable MICRO800_SIM
/// names another one. It ends with the object, and also when the test program dies. No wait lasts
/// longer than its limit. Needs no event loop; one thread at a time may use an object.
class SimulatorProcess {
 public:
    explicit SimulatorProcess(const QStringList& arguments = QStringList());
    ~SimulatorProcess();
    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;

    /// Without a log requests are served faster, and a long test does not fill the disk. Before
    /// start().
    void setLogging(bool on) { logging = on; }

    /// Starts the program and reads its port. Port 0 takes one that stays reserved for this object
    /// until its end, so that nobody else answers on it while the program is stopped. False with
    /// the reason in error().
    bool start(quint16 port = 0);
    /// Starts it again on the port that it had, with nothing left of what it knew but its log.
    bool restart();
    quint16 port() const { return printedPort; }
    pid_t pid() const { return process; }

    /// Asks it to end by this signal and waits; the exit code, -1 when it did not end in time or of
    /// its own.
    int stop(int signal = SIGTERM);
    /// Ends it at once, as a power cut would, though the system still closes its connections.
    void kill();

    /// Sends a command line ("fault cut", "set A=1", "down", ...) and returns the line that it
    /// is answered with, "ok", "ok VALUES" or "error: REASON"; empty with the reason in error()
    /// when there is none in time.
    std::string command(const QString& line);

    /// The requests so far, one object a request with the keys of the simulator's log.
    QList<QJsonObject> log() const;
    /// Waits until at least `count` requests are such; false when they are not in time.
    bool waitForLog(int count, const std::function<bool(const QJsonObject&)>& such,
                    int timeoutMs = 10000) const;
    QString logPath() const { return dir.filePath("requests.json"); }

    std::string error() const { return problem; }

    /// The path of the program.
    static QString program();
    /// Runs the program to its end with nothing on standard input. The exit code, -1 when it did
    /// not end in time or by a signal.
    static int run(const QStringList& arguments, QByteArray* output, QByteArray* errors);

 private:
    bool readLine(QByteArray* line, int timeoutMs);
    /// Waits for the process to end and collects its exit code.
    int collect(int timeoutMs);
    void closeStreams();

    const QStringList ownArguments;
    const QTemporaryDir dir;
    bool logging = true;
    std::unique_ptr<ReservedPort> reserved;
    quint16 printedPort = 0;
    pid_t process = -1;
    int inDescriptor = -1;   ///< our end of its standard input
    int outDescriptor = -1;  ///< our end of its standard output
    QByteArray pending;
    std::string problem;
};

#endif
