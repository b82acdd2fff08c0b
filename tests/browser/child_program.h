#ifndef TESTS_BROWSER_CHILD_PROGRAM_H
#define TESTS_BROWSER_CHILD_PROGRAM_H

#include <QByteArray>
#include <QProcess>
#include <QStringList>

/// A program that runs beside the test and ends with it, also when the test is killed.
///
///     ChildProgram program;
///     ASSERT_TRUE(program.begin("/usr/bin/chromedriver", {"--port=0"}));
///     const QByteArray line = program.lineWith("successfully on port");
class ChildProgram : public QProcess {
 public:
    ~ChildProgram() override;

    /// Starts it; false when there is no such program.
    bool begin(const QString& program, const QStringList& arguments);
    /// Waits for a line on its standard output with this text; empty when none arrives in time.
    QByteArray lineWith(const QByteArray& text);
    /// Asks it to end by SIGTERM and waits; the exit code, -1 when it did not end in time.
    int end();
    /// Sends it a signal, such as SIGSTOP.
    void signal(int number) const;

 protected:
    void setupChildProcess() override;
};

#endif
