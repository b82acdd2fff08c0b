#include "integration/record/record_rig.h"

#include <stdio.h>
#include <stdlib.h>

#include <QDir>

#include "support/app_directory/app_directory.h"

void RecordTest::SetUp() {
    writeProjectDatabase(QStringList());
    setenv("MICRO800_RECORD", folder.path().toLocal8Bit().constData(), 1);
}

void RecordTest::TearDown() {
    unsetenv("MICRO800_RECORD");
    unsetenv("MICRO800_RECORD_SIZE");
}

QStringList RecordTest::recordings() const {
    return QDir(folder.path()).entryList({"*.pcapng"}, QDir::Files, QDir::Time | QDir::Reversed);
}

CaptureFile RecordTest::read(const QString& name) const {
    CaptureFile file;
    QString problem;
    EXPECT_TRUE(file.read(pathOf(name), &problem))
        << name.toStdString() << ": " << problem.toStdString();
    return file;
}

QString RecordTest::waitForRecording(const QString& why) const {
    QStringList found;
    const bool there = waitFor(
        [&] {
            found = recordings().filter('-' + why + ".pcapng");
            return !found.isEmpty();
        },
        20000);
    EXPECT_TRUE(there) << why.toStdString() << " is not among "
                       << recordings().join(' ').toStdString();
    return found.value(0);
}

QStringList RecordTest::tshark(const QString& path, const QString& filter,
                               const QStringList& fields) {
    QString command = "tshark -n -r '" + path + "' -Y '" + filter + "' -T fields";
    for (const QString& field : fields) {
        command += " -e " + field;
    }
    FILE* const output = popen((command + " 2>/dev/null").toLocal8Bit().constData(), "r");
    QByteArray text;
    char buffer[4096];
    size_t got = 1;
    while (output && got > 0) {
        got = fread(buffer, 1, sizeof buffer, output);
        text.append(buffer, int(got));
    }
    EXPECT_TRUE(output && pclose(output) == 0) << command.toStdString();
    return QString::fromUtf8(text).split('\n', Qt::SkipEmptyParts);
}

void RecordTest::expectSound(const QString& name) const {
    const QStringList broken =
        tshark(pathOf(name), "_ws.malformed || tcp.analysis.flags || _ws.short",
               {"frame.number", "_ws.col.Info"});
    EXPECT_EQ(QStringList(), broken) << name.toStdString();
}
