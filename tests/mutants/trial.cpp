#include "mutants/trial.h"

#include <sys/types.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <csignal>

namespace {

const char kPlugin[] = "plugins/libab_micro800_ethernet.so";

/// What a changed program may take: a loop without an end is to end, memory without a bound too.
const int kMemoryKb = 4 * 1024 * 1024;
const double kTimesLonger = 4;
const int kSecondsLonger = 20;
const int kRounds = 4;

struct Run {
    bool started;
    bool ok;  ///< ended by itself with exit code 0
    QString out;
};

/// Its children end with it: some tests run in a child of their program.
class ProcessGroup : public QProcess {
 public:
    void end() {
        ::kill(-static_cast<pid_t>(processId()), SIGKILL);
        waitForFinished(-1);
    }

 protected:
    void setupChildProcess() override { setpgid(0, 0); }
};

Run shell(const QString& command, const QString& folder, const QProcessEnvironment& environment,
          int seconds) {
    ProcessGroup process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(folder);
    process.setProcessEnvironment(environment);
    process.start("sh", {"-c", command});
    Run run = {process.waitForStarted(-1), false, QString()};
    if (!process.waitForFinished(seconds * 1000)) {
        process.end();
        run.out = QString::fromLocal8Bit(process.readAll()) + "\n[ time is up ]";
        return run;
    }
    run.ok = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    run.out = QString::fromLocal8Bit(process.readAll());
    return run;
}

/// Any way in which a build says why it does not work.
QString firstComplaint(const QString& out) {
    for (const QString& line : out.split('\n')) {
        if (line.contains("error") || line.contains("undefined")) {
            return line.trimmed();
        }
    }
    return out.section('\n', 0, 0);
}

/// The test that failed; else the one that ran last, which did not come to its end.
QString failedTestOf(const QString& out) {
    static const QRegularExpression failed("\\[  FAILED  \\] ([^\\s,]+\\.[^\\s,]+)(,| \\()");
    static const QRegularExpression begun("\\[ RUN      \\] (\\S+\\.\\S+)");
    const QRegularExpressionMatch match = failed.match(out);
    if (match.hasMatch()) {
        return match.captured(1);
    }
    QString last;
    QRegularExpressionMatchIterator all = begun.globalMatch(out);
    while (all.hasNext()) {
        last = all.next().captured(1);
    }
    return last.isEmpty() ? QString("the start of the program") : last;
}

QString testCommand(const QString& file, const QString& filter) {
    return QString("ulimit -v %1; ulimit -c 0; exec '%2' --gtest_fail_fast --gtest_color=no%3")
        .arg(kMemoryKb)
        .arg(file, filter.isEmpty() ? QString() : " '--gtest_filter=" + filter + "'");
}

}  // namespace

QList<TestProgram> programsFor(const QString& file, bool quick) {
    const bool recorder = file.startsWith("eip/record/") || file.endsWith("_record.cpp");
    QString unit = "tests/unit_driver";
    if (file.startsWith("common/")) {
        unit = "tests/unit_common";
    } else if (file.startsWith("eip/cip/")) {
        unit = "tests/unit_cip";
    } else if (file.startsWith("eip/record/")) {
        unit = "tests/unit_record";
    } else if (file.startsWith("eip/")) {
        unit = "tests/unit_eip";
    }
    QList<TestProgram> programs = {{unit, false}};
    if (!file.startsWith("eip/record/")) {
        programs << TestProgram{"tests/integration_worker", false};
    }
    if (!quick) {
        programs << TestProgram{recorder ? "tests/integration_record" : "tests/integration_driver",
                                true};
    }
    return programs;
}

Trial::Trial(const QString& root, const BuildTree& build, const QString& folder,
             const QHash<QString, double>& seconds, bool quick)
    : root(root),
      build(build),
      folder(QDir(folder).absolutePath()),
      seconds(seconds),
      quick(quick) {
    QDir().mkpath(this->folder);
}

double Trial::timeOf(const BuildTree& build, const TestProgram& program, QString* problem) {
    const QString file = build.path() + '/' + program.target;
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QElapsedTimer timer;
    timer.start();
    const Run run = shell("'" + file + "' --gtest_color=no", build.path(), environment, 1800);
    const double seconds = static_cast<double>(timer.elapsed()) / 1000;
    const QString test = run.ok ? QString() : failedTestOf(run.out);
    if (!run.ok && !shell(testCommand(file, test), build.path(), environment, 1800).ok) {
        *problem = program.target + ": " + test + " fails with nothing changed";
        return -1;
    }
    return seconds;
}

bool Trial::compile(const Mutation& mutation, QString* problem) {
    QFile changed(folder + "/mutant.cpp");
    if (!changed.open(QIODevice::WriteOnly)) {
        *problem = "cannot write " + changed.fileName();
        return false;
    }
    changed.write(mutation.changed());
    changed.close();
    const QString original = root + '/' + mutation.file;
    const Run run = shell(build.compileCommand(original, changed.fileName(), folder + "/mutant.o"),
                          folder, QProcessEnvironment::systemEnvironment(), 600);
    if (!run.ok) {
        *problem = firstComplaint(run.out);
    }
    return run.ok;
}

bool Trial::link(const TestProgram& program, QString* problem) {
    const QString target = program.withPlugin ? QString(kPlugin) : program.target;
    const QString command =
        build.linkCommand(target, folder + "/mutant.o", folder + '/' + target.section('/', -1));
    if (command.isEmpty()) {
        *problem = build.path() + " has no " + target;
        return false;
    }
    const Run run = shell(command, folder, QProcessEnvironment::systemEnvironment(), 600);
    if (!run.ok) {
        *problem = firstComplaint(run.out);
    }
    return run.ok;
}

QString Trial::failingTest(const TestProgram& program) {
    const QString target = program.withPlugin ? QString(kPlugin) : program.target;
    const QString output = folder + '/' + target.section('/', -1);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("MICRO800_TEST_PLUGIN", output);
    const QString file = program.withPlugin ? build.path() + '/' + program.target : output;
    const int limit =
        static_cast<int>(seconds.value(program.target) * kTimesLonger) + kSecondsLonger;
    // One that fails only once was hindered by what else runs on the machine, and stopped the
    // others.
    QStringList passed;
    for (int round = 0; round < kRounds; ++round) {
        const QString others = passed.isEmpty() ? QString() : "-" + passed.join(':');
        const Run all = shell(testCommand(file, others), folder, environment, limit);
        if (all.ok) {
            return QString();
        }
        const QString test = failedTestOf(all.out);
        if (!test.contains('.') || !shell(testCommand(file, test), folder, environment, limit).ok) {
            return test;
        }
        passed << test;
    }
    return QString();
}

Result Trial::run(const Mutation& mutation) {
    Result result = {mutation, Outcome::survived, QString()};
    if (!compile(mutation, &result.by)) {
        result.outcome = Outcome::doesNotCompile;
        return result;
    }
    for (const TestProgram& program : programsFor(mutation.file, quick)) {
        if (!link(program, &result.by)) {
            result.outcome = Outcome::doesNotCompile;
            break;
        }
        const QString test = failingTest(program);
        if (!test.isEmpty()) {
            result.outcome = Outcome::noticed;
            result.by = program.target.section('/', -1) + ": " + test;
            break;
        }
    }
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    return result;
}
