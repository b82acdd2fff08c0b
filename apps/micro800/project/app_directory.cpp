#include "apps/micro800/project/app_directory.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "apps/micro800/base/child_process.h"
#include "apps/micro800/base/input.h"
#include "apps/micro800/base/problem.h"
#include "apps/micro800/project/project_store.h"

namespace {

/// In front of the copy's arguments, with the number of the descriptor.
const char kHandoverOption[] = "--app-directory-from=";
const char kEmulator[] = "MICRO800_EMULATOR";
const char kCopyName[] = "micro800";

// ---- state of this process ----------------------------------------------------------------------

int argumentCount = 0;
char** arguments = nullptr;
QString ownDirectory;  // of the program that the user started
bool isCopy = false;

// ---- the directory ------------------------------------------------------------------------------

/// The private directory and what this program puts into it, which the destructor removes: these
/// names and never a whole tree.
class AppDirectory {
 public:
    AppDirectory() = default;
    ~AppDirectory();
    AppDirectory(const AppDirectory&) = delete;
    AppDirectory& operator=(const AppDirectory&) = delete;

    bool make(const QString& project, QString* problem);
    QString path() const { return QFile::decodeName(name); }
    QByteArray program() const { return name + '/' + kCopyName; }

 private:
    bool putProgram(QString* problem);
    bool putProject(const QString& project, QString* problem);
    void removeEmptyProject();

    QByteArray name;
    int descriptor = -1;
};

AppDirectory::~AppDirectory() {
    if (descriptor < 0) {
        return;
    }
    unlinkat(descriptor, kCopyName, 0);
    if (unlinkat(descriptor, "compile", 0) != 0) {
        removeEmptyProject();
    }
    close(descriptor);
    rmdir(name.constData());
}

/// Not through a link that has taken its place: that would be somebody's project.
void AppDirectory::removeEmptyProject() {
    const int compile = openat(descriptor, "compile", O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (compile < 0) {
        return;
    }
    const int database = openat(compile, "database", O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (database >= 0) {
        unlinkat(database, "database", 0);
        close(database);
    }
    unlinkat(compile, "database", AT_REMOVEDIR);
    close(compile);
    unlinkat(descriptor, "compile", AT_REMOVEDIR);
}

bool AppDirectory::make(const QString& project, QString* problem) {
    name = QFile::encodeName(
        QDir(QDir::tempPath()).absoluteFilePath(QStringLiteral("micro800-XXXXXX")));
    if (!mkdtemp(name.data())) {
        return fail(problem, QStringLiteral("cannot make a temporary directory: %1")
                                 .arg(QString::fromLocal8Bit(std::strerror(errno))));
    }
    descriptor = open(name.constData(), O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        const int error = errno;
        rmdir(name.constData());
        return fail(problem, QStringLiteral("cannot open the temporary directory %1: %2")
                                 .arg(path(), QString::fromLocal8Bit(std::strerror(error))));
    }
    return putProgram(problem) && putProject(project, problem);
}

bool AppDirectory::putProgram(QString* problem) {
    QFile file(QCoreApplication::applicationFilePath());
    const QString copy = QFile::decodeName(program());
    return file.copy(copy) ||
           fail(problem,
                QStringLiteral("cannot copy the program to %1: %2").arg(copy, file.errorString()));
}

bool AppDirectory::putProject(const QString& project, QString* problem) {
    if (project.isEmpty()) {
        return createEmptyProject(path(), problem);
    }
    const QString compile = path() + QLatin1String("/compile");
    QFile source(QDir(project).absoluteFilePath(QStringLiteral("compile")));
    return source.link(compile) ||
           fail(problem, QStringLiteral("cannot link %1 to %2: %3")
                             .arg(compile, source.fileName(), source.errorString()));
}

// ---- what the copy is told ----------------------------------------------------------------------

/// Both directories and "DESCRIPTOR:NAME" for each input that the copy cannot read again.
QList<QByteArray> handoverParts(const QString& directory) {
    QList<QByteArray> parts{QFile::encodeName(directory), QFile::encodeName(ownDirectory)};
    for (const KeptInput& input : keptInputs()) {
        parts << QByteArray::number(input.descriptor) + ':' + input.name.toUtf8();
    }
    return parts;
}

/// The parts, each with a zero byte after it, in a pipe that nobody writes to any more. Returns
/// the end to read from, which the copy inherits; -1 with errno on failure.
int makeHandover(const QString& directory) {
    const QByteArray record = handoverParts(directory).join('\0') + '\0';
    int ends[2];
    if (pipe(ends) != 0) {
        return -1;
    }
    // A pipe takes at least a page; a longer record must not wait for a reader.
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    const ssize_t written =
        write(ends[1], record.constData(), static_cast<std::size_t>(record.size()));
    close(ends[1]);
    if (written == record.size()) {
        return ends[0];
    }
    close(ends[0]);
    errno = ENAMETOOLONG;
    return -1;
}

/// The parts in the pipe that the option names; none when it is no such pipe.
QList<QByteArray> partsFrom(const char* number) {
    bool ok = false;
    const int descriptor = QByteArray(number).toInt(&ok);
    struct stat kind;
    if (!ok || descriptor <= STDERR_FILENO || fstat(descriptor, &kind) != 0 ||
        !S_ISFIFO(kind.st_mode)) {
        return {};
    }
    // Never wait for a writer: there is none after a handover.
    fcntl(descriptor, F_SETFL, O_NONBLOCK);
    QFile pipe;
    pipe.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle);
    QList<QByteArray> parts = pipe.readAll().split('\0');
    parts.removeLast();  // after the last zero byte
    return parts;
}

bool takeHandover(const char* number, QString* directory) {
    QList<QByteArray> parts = partsFrom(number);
    if (parts.size() < 2) {
        return false;
    }
    *directory = QFile::decodeName(parts.takeFirst());
    ownDirectory = QFile::decodeName(parts.takeFirst());
    for (const QByteArray& part : parts) {
        const int colon = part.indexOf(':');
        adoptInput({QString::fromUtf8(part.mid(colon + 1)), part.left(colon).toInt()});
    }
    return true;
}

// ---- starting the copy --------------------------------------------------------------------------

QString execProblem(const QString& directory, int error) {
    QString text = QStringLiteral("cannot start the program from %1: %2")
                       .arg(directory, QString::fromLocal8Bit(std::strerror(error)));
    if (error == EACCES) {
        text += QLatin1String("; set TMPDIR to a directory that programs may run from");
    }
    if (error == ENOEXEC) {
        text += QLatin1String("; under an emulator, set MICRO800_EMULATOR to its command");
    }
    return text;
}

/// The command line of the copy: the emulator's, the program, the option, the user's arguments.
std::vector<QByteArray> copysWords(const AppDirectory& directory, int handover,
                                   const QStringList& emulator) {
    std::vector<QByteArray> words;
    for (const QString& word : emulator) {
        words.push_back(QFile::encodeName(word));
    }
    // An emulator finds the program by this argument; else it is the name the user called.
    words.push_back(emulator.isEmpty() ? QByteArray(arguments[0]) : directory.program());
    words.push_back(kHandoverOption + QByteArray::number(handover));
    for (int i = 1; i < argumentCount; ++i) {
        words.push_back(arguments[i]);
    }
    return words;
}

/// Runs the copy to its end. False when it could not be started.
bool runCopy(const AppDirectory& directory, ChildProcess* copy, ProcessEnd* end, QString* problem) {
    const int handover = makeHandover(directory.path());
    if (handover < 0) {
        return fail(problem, execProblem(directory.path(), errno));
    }
    const QStringList emulator = QProcess::splitCommand(qEnvironmentVariable(kEmulator));
    const std::vector<QByteArray> words = copysWords(directory, handover, emulator);
    // A command that starts this program again must not lead to a copy of the copy, without end.
    qunsetenv(kEmulator);
    const bool started =
        copy->start(emulator.isEmpty() ? directory.program() : words.front(), words);
    const int error = errno;
    close(handover);
    if (!started) {
        return fail(problem, execProblem(directory.path(), error));
    }
    *end = copy->wait();
    return true;
}

}  // namespace

bool adoptAppDirectory(int* argc, char** argv, QString* problem) {
    const QString here = QCoreApplication::applicationDirPath();
    ownDirectory = here;
    const std::size_t length = std::strlen(kHandoverOption);
    if (*argc > 1 && std::strncmp(argv[1], kHandoverOption, length) == 0) {
        QString directory;
        if (!takeHandover(argv[1] + length, &directory)) {
            return fail(problem, QStringLiteral("%1 is for the copy that this program starts of "
                                                "itself")
                                     .arg(QString::fromLocal8Bit(argv[1])));
        }
        if (QDir(directory).canonicalPath() != QDir(here).canonicalPath()) {
            return fail(problem, QStringLiteral("the copy in %1 finds itself in %2: this system "
                                                "cannot give a program another place")
                                     .arg(directory, here));
        }
        isCopy = true;
        std::copy(argv + 2, argv + *argc + 1, argv + 1);  // with the null pointer after the last
        --*argc;
    }
    argumentCount = *argc;
    arguments = argv;
    return true;
}

QString programDirectory() {
    return ownDirectory;
}

bool enterAppDirectory(const QString& project, QString* problem) {
    if (isCopy) {
        return true;
    }
    if (!project.isEmpty() && !projectExists(project)) {
        return fail(problem, QStringLiteral("no project in %1: %2 is missing (micro800 project "
                                            "makes one)")
                                 .arg(project, projectDatabasePath(project)));
    }
    // First: no signal ends this process while the directory is there.
    ChildProcess copy;
    ProcessEnd end;
    {
        AppDirectory directory;
        if (!directory.make(project, problem) || !runCopy(directory, &copy, &end, problem)) {
            return false;
        }
    }
    endLike(end);
}
