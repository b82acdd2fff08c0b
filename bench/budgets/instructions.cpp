#include "bench/budgets/instructions.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {

const int kLimitMs = 120000;
const char kTrigger[] = "desc: Trigger: Client Request: ";
const char kTotals[] = "\ntotals: ";

QByteArray field(const QByteArray& text, const QByteArray& title) {
    const int at = text.indexOf(title);
    const int begin = at + title.size();
    return at < 0 ? QByteArray() : text.mid(begin, text.indexOf('\n', begin) - begin).trimmed();
}

/// One run. The files that the probe had written are of its own thread alone, or of all threads.
Instructions countOnce(const QStringList& command, bool ownThread, QByteArray* output,
                       QString* problem) {
    Instructions counts = {};
    QTemporaryDir dir;
    QProcess valgrind;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_HASH_SEED", "0");
    valgrind.setProcessEnvironment(environment);
    const QStringList options = {"--tool=callgrind", "--quiet",
                                 ownThread ? "--separate-threads=yes" : "--separate-threads=no",
                                 "--callgrind-out-file=" + dir.filePath("count")};
    valgrind.start(BENCH_VALGRIND, options + command);
    if (!valgrind.waitForFinished(kLimitMs) || valgrind.exitCode() != 0) {
        *problem = "callgrind: " + valgrind.errorString() + "\n" + valgrind.readAllStandardError();
        return counts;
    }
    *output = valgrind.readAllStandardOutput();
    for (const QString& name : QDir(dir.path()).entryList(QDir::Files)) {
        QFile file(dir.filePath(name));
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        for (int access = 0; access < kAccesses; ++access) {
            if (field(text, kTrigger) == kAccessNames[access]) {
                counts[access] = field(text, kTotals).toDouble();
            }
        }
    }
    return counts;
}

}  // namespace

Instructions countInstructions(const QString& probe, quint16 port, QByteArray* output,
                               QString* problem) {
    const QStringList command = {probe, QString::number(port)};
    // What the worker polls meanwhile is not of a cached read.
    const double cached = countOnce(command, true, output, problem)[kCachedRead];
    if (!problem->isEmpty()) {
        return Instructions();
    }
    Instructions counts = countOnce(command, false, output, problem);
    counts[kCachedRead] = cached;
    return counts;
}
