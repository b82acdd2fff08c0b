#include "apps/micro800/app_directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <vector>

#include "apps/micro800/problem.h"
#include "apps/micro800/project_store.h"
#include "apps/micro800/signals.h"

namespace {

/// Handed from the program to its copy: "PID:TEMPORARY DIRECTORY", and the directory of the
/// program. The exec keeps the process id, so that the first means nothing to any other process.
const char kHandover[] = "MICRO800_APP_DIRECTORY";
const char kProgramDirectory[] = "MICRO800_PROGRAM_DIRECTORY";
const char kCopyName[] = "micro800";

// ---- what is removed at the end -------------------------------------------------------------

/// Paths of the temporary directory, ready for a signal handler: no memory, no Qt.
struct Leftovers {
    char directory[PATH_MAX];
    char program[PATH_MAX];
    char compile[PATH_MAX];
    char databaseDir[PATH_MAX];
    char database[PATH_MAX];
    bool linked;  ///< `compile` is a link to the user's project, which must not be touched
    volatile sig_atomic_t present;
};

Leftovers g_leftovers;

bool setPath(char* target, const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    if (name.size() >= PATH_MAX)
        return false;
    std::memcpy(target, name.constData(), static_cast<std::size_t>(name.size()) + 1);
    return true;
}

bool setLeftovers(const QString& directory) {
    const QString compile = directory + QLatin1String("/compile");
    Leftovers& paths = g_leftovers;
    if (!setPath(paths.directory, directory) ||
        !setPath(paths.program, directory + QLatin1Char('/') + QLatin1String(kCopyName)) ||
        !setPath(paths.compile, compile) ||
        !setPath(paths.databaseDir, compile + QLatin1String("/database")) ||
        !setPath(paths.database, compile + QLatin1String("/database/database"))) {
        return false;
    }
    paths.linked = QFileInfo(compile).isSymLink();
    paths.present = 1;
    return true;
}

/// Async-signal-safe. Removes only what this program puts there, never a whole tree.
void removeLeftovers() {
    if (!g_leftovers.present)
        return;
    g_leftovers.present = 0;
    unlink(g_leftovers.program);
    if (g_leftovers.linked) {
        unlink(g_leftovers.compile);
    } else {
        unlink(g_leftovers.database);
        rmdir(g_leftovers.databaseDir);
        rmdir(g_leftovers.compile);
    }
    rmdir(g_leftovers.directory);
}

extern "C" void removeAndDie(int number) {
    removeLeftovers();
    // SA_RESETHAND: the signal now does what it would have done.
    raise(number);
}

void removeOnSignals() {
    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = removeAndDie;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigfillset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGALRM, SIGXCPU}) {
        struct sigaction before;
        // nohup and the like stay as they are.
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

void unblockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_UNBLOCK, &all, nullptr);
}

// ---- state of this process --------------------------------------------------------------------

char** g_argv = nullptr;
QString g_programDirectory;
bool g_isCopy = false;

// ---- starting the copy --------------------------------------------------------------------------

bool fillDirectory(const QString& directory, const QString& project, QString* problem) {
    const QString copy = directory + QLatin1Char('/') + QLatin1String(kCopyName);
    QFile program(QCoreApplication::applicationFilePath());
    if (!program.copy(copy)) {
        return fail(
            problem,
            QStringLiteral("cannot copy the program to %1: %2").arg(copy, program.errorString()));
    }
    const QString compile = directory + QLatin1String("/compile");
    if (project.isEmpty())
        return createEmptyProject(directory, problem);
    QFile source(QDir(project).absoluteFilePath(QStringLiteral("compile")));
    if (!source.link(compile)) {
        return fail(problem, QStringLiteral("cannot link %1 to %2: %3")
                                 .arg(compile, source.fileName(), source.errorString()));
    }
    return true;
}

/// Returns only when the copy could not be started; errno says why.
void execCopy(const QString& directory) {
    const QByteArray copy = QFile::encodeName(directory) + '/' + kCopyName;
    std::vector<QByteArray> words;
    for (const QString& word : QProcess::splitCommand(qEnvironmentVariable("MICRO800_EMULATOR")))
        words.push_back(QFile::encodeName(word));
    std::vector<char*> arguments;
    for (QByteArray& word : words)
        arguments.push_back(word.data());
    const bool emulated = !words.empty();
    QByteArray copyArgument = copy;
    // An emulator finds the program by this argument; else it is the name the user called.
    arguments.push_back(emulated ? copyArgument.data() : g_argv[0]);
    for (char** argument = g_argv + 1; *argument; ++argument)
        arguments.push_back(*argument);
    arguments.push_back(nullptr);
    if (emulated)
        execvp(arguments[0], arguments.data());
    else
        execv(copy.constData(), arguments.data());
}

QString execProblem(const QString& directory, int error) {
    QString text = QStringLiteral("cannot start the program from %1: %2")
                       .arg(directory, QString::fromLocal8Bit(std::strerror(error)));
    if (error == EACCES)
        text += QLatin1String("; set TMPDIR to a directory that programs may run from");
    if (error == ENOEXEC)
        text += QLatin1String("; under an emulator, set MICRO800_EMULATOR to its command");
    return text;
}

/// The temporary directory that the environment gives this process; empty when it is no copy.
QString takeHandover() {
    const QByteArray handover = qgetenv(kHandover);
    const QByteArray ownPid = QByteArray::number(getpid()) + ':';
    qunsetenv(kHandover);
    return handover.startsWith(ownPid) ? QFile::decodeName(handover.mid(ownPid.size())) : QString();
}

}  // namespace

bool adoptAppDirectory(char** argv, QString* problem) {
    g_argv = argv;
    g_programDirectory = QCoreApplication::applicationDirPath();
    const QString directory = takeHandover();
    if (directory.isEmpty())
        return true;
    if (!setLeftovers(directory))
        return fail(problem, QStringLiteral("%1: path too long").arg(directory));
    removeOnSignals();
    unblockSignals();
    if (QDir(directory).canonicalPath() != QDir(g_programDirectory).canonicalPath()) {
        return fail(problem, QStringLiteral("the copy in %1 finds itself in %2: this system cannot "
                                            "give a program another place")
                                 .arg(directory, g_programDirectory));
    }
    g_programDirectory = QFile::decodeName(qgetenv(kProgramDirectory));
    qunsetenv(kProgramDirectory);
    g_isCopy = true;
    return true;
}

void leaveAppDirectory() {
    const SignalsHeld held;  // one of them must not cut the removal short
    removeLeftovers();
}

QString programDirectory() {
    return g_programDirectory;
}

bool enterAppDirectory(const QString& project, QString* problem) {
    if (g_isCopy)
        return true;
    if (!project.isEmpty() && !projectExists(project)) {
        return fail(problem, QStringLiteral("no project in %1: %2 is missing (micro800 project "
                                            "makes one)")
                                 .arg(project, projectDatabasePath(project)));
    }
    // Held until the copy has its handlers: a signal meanwhile must not leave the directory.
    const SignalsHeld held;
    QTemporaryDir directory(
        QDir(QDir::tempPath()).absoluteFilePath(QStringLiteral("micro800-XXXXXX")));
    if (!directory.isValid()) {
        return fail(
            problem,
            QStringLiteral("cannot make a temporary directory: %1").arg(directory.errorString()));
    }
    if (!fillDirectory(directory.path(), project, problem))
        return false;
    qputenv(kHandover, QByteArray::number(getpid()) + ':' + QFile::encodeName(directory.path()));
    qputenv(kProgramDirectory, QFile::encodeName(g_programDirectory));
    execCopy(directory.path());
    const int error = errno;
    qunsetenv(kHandover);
    return fail(problem, execProblem(directory.path(), error));
}
