#include "integration/cli/cli_program.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

CliTest::CliTest() : environment(QProcessEnvironment::systemEnvironment()) {
    for (const char* name : {"MICRO800_PLUGIN", "MICRO800_HOST"}) {
        environment.remove(name);
    }
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

std::unique_ptr<CliProcess> CliTest::start(const QStringList& arguments) {
    auto process = std::make_unique<CliProcess>();
    process->setInput(input);
    EXPECT_TRUE(process->start(program(), arguments, environment));
    return process;
}

CliResult CliTest::run(const QStringList& arguments) {
    return start(arguments)->finish();
}

CliResult CliTest::runAndStopReading(const QStringList& arguments, const char* text) {
    auto process = start(arguments);
    EXPECT_TRUE(process->hasPrinted(text));
    process->closeOutput();
    return process->finish();
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
    for (const QJsonObject& request : controller->log()) {
        count += request.value("service").toString() == QLatin1String(service);
    }
    return count;
}

QString CliTest::fileWith(const char* name, const QByteArray& content) const {
    const QString path = files.filePath(name);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(content), content.size());
    return path;
}

QProcessEnvironment CliTest::shellEnvironment() const {
    QProcessEnvironment settings = environment;
    settings.insert("PATH", QFileInfo(program()).path() + ':' + settings.value("PATH"));
    return settings;
}
