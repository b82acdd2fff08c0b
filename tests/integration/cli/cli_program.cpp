#include "integration/cli/cli_program.h"

#include <QDir>

namespace {

/// Long enough for a sanitizer's build on a busy machine.
const int kRunMs = 60000;

}  // namespace

CliTest::CliTest() : environment(QProcessEnvironment::systemEnvironment()) {
    for (const char* name : {"MICRO800_PLUGIN", "MICRO800_EMULATOR", "MICRO800_APP_DIRECTORY"})
        environment.remove(name);
    environment.insert("TMPDIR", tmp.path());
}

void CliTest::TearDown() {
    EXPECT_EQ(leftovers(), QStringList());
}

QString CliTest::program() {
    return QString(MICRO800_PROGRAM);
}

QStringList CliTest::leftovers() const {
    return QDir(tmp.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

std::unique_ptr<QProcess> CliTest::start(const QStringList& arguments) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->setStandardInputFile(QProcess::nullDevice());
    process->start(program(), arguments);
    EXPECT_TRUE(process->waitForStarted(kRunMs)) << qPrintable(process->errorString());
    return process;
}

CliResult CliTest::finish(QProcess* process) {
    CliResult result;
    if (!process->waitForFinished(kRunMs)) {
        process->kill();
        process->waitForFinished(kRunMs);
    } else if (process->exitStatus() == QProcess::NormalExit) {
        result.exitCode = process->exitCode();
    } else {
        result.signal = process->exitCode();
    }
    result.out = process->readAllStandardOutput();
    result.err = process->readAllStandardError();
    return result;
}

CliResult CliTest::run(const QStringList& arguments) {
    return finish(start(arguments).get());
}

void CliTest::startController(const QStringList& arguments) {
    controller = std::make_unique<SimulatorProcess>(arguments);
    ASSERT_TRUE(controller->start()) << controller->error();
}

QStringList CliTest::withController(const char* command, const QStringList& arguments) const {
    return QStringList{command, "--host", "127.0.0.1", "--port",
                       QString::number(controller->port())} +
           arguments;
}

CliResult CliTest::runWith(const char* command, const QStringList& arguments) {
    return run(withController(command, arguments));
}

int CliTest::requests(const char* service) const {
    int count = 0;
    for (const QJsonObject& request : controller->log())
        count += request.value("service").toString() == QLatin1String(service);
    return count;
}

CliResult CliTest::runIntoHead(const QStringList& arguments) {
    QProcess process;
    QProcess head;
    process.setProcessEnvironment(environment);
    process.setStandardOutputProcess(&head);
    head.setStandardOutputFile(QProcess::nullDevice());
    process.start(program(), arguments);
    head.start("head", {"-n", "1"});
    const CliResult result = finish(&process);
    EXPECT_TRUE(head.waitForFinished(kRunMs));
    return result;
}
