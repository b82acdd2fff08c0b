#ifndef TESTS_INTEGRATION_CLI_CLI_PROGRAM_H
#define TESTS_INTEGRATION_CLI_CLI_PROGRAM_H

#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <ostream>

#include "integration/cli/cli_process.h"
#include "support/simulator_process.h"

QT_BEGIN_NAMESPACE
inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << bytes.constData();
}
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << qPrintable(text);
}
QT_END_NAMESPACE

/// Runs the real program with its real plugin. Each test gets a directory for temporary files,
/// which must be as empty at its end as it was before.
class CliTest : public testing::Test {
 protected:
    CliTest();
    void TearDown() override;

    /// Runs it to its end.
    CliResult run(const QStringList& arguments);
    /// Starts it and returns at once.
    std::unique_ptr<CliProcess> start(const QStringList& arguments);
    /// Runs it until it prints `text`, closes its standard output, and waits for its end.
    CliResult runAndStopReading(const QStringList& arguments, const char* text);

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
    /// That of a shell in which the program is found by its name.
    QProcessEnvironment shellEnvironment() const;
    /// A file of this content that lives as long as the test.
    QString fileWith(const char* name, const QByteArray& content) const;

    QTemporaryDir tmp;
    QProcessEnvironment environment;
    std::unique_ptr<SimulatorProcess> controller;
    QTemporaryDir files;
    /// What the programs that it starts find on their standard input.
    QString input = QStringLiteral("/dev/null");
};

#endif
