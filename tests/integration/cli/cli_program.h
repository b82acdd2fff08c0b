#ifndef TESTS_INTEGRATION_CLI_CLI_PROGRAM_H
#define TESTS_INTEGRATION_CLI_CLI_PROGRAM_H

#include <gtest/gtest.h>

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <ostream>

#include "support/simulator_process.h"

QT_BEGIN_NAMESPACE
inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << bytes.constData();
}
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << qPrintable(text);
}
QT_END_NAMESPACE

/// What one run of the command-line host came to.
struct CliResult {
    int exitCode = -1;  ///< -1 when it ended by a signal or not in time
    int signal = 0;     ///< the signal that ended it
    QByteArray out;
    QByteArray err;
};

/// Runs the real program with its real plugin. Each test gets a directory for temporary files,
/// which must be as empty at its end as it was before.
class CliTest : public testing::Test {
 protected:
    CliTest();
    void TearDown() override;

    /// Runs it to its end.
    CliResult run(const QStringList& arguments);
    /// Starts it and returns at once; finish() waits for its end.
    std::unique_ptr<QProcess> start(const QStringList& arguments);
    CliResult finish(QProcess* process);
    /// Runs it with its output read by a program that ends after the first line.
    CliResult runIntoHead(const QStringList& arguments);

    /// Starts the simulated controller.
    void startController(const QStringList& arguments);
    /// "--host 127.0.0.1 --port N" of the simulated controller, after the subcommand.
    QStringList withController(const char* command, const QStringList& arguments) const;
    /// withController() and run().
    CliResult runWith(const char* command, const QStringList& arguments);
    /// How many requests with this service the controller has seen.
    int requests(const char* service) const;

    /// What lies in the directory for temporary files.
    QStringList leftovers() const;

    static QString program();

    QTemporaryDir tmp;
    QProcessEnvironment environment;
    std::unique_ptr<SimulatorProcess> controller;
};

#endif
