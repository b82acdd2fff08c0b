#include "eip/record/record_folder.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegExp>
#include <QStringList>
#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>

#include "common/process.h"

namespace {

const mode_t kFileMode = 0644;
const int kMostSuffixes = 100;

std::mutex dumpMutex;
unsigned dumpsTaken = 0;  // guarded by dumpMutex

QString text(const std::string& name) {
    return QFile::decodeName(QByteArray(name.data(), static_cast<int>(name.size())));
}

std::string systemText(int error) {
    char buffer[256];
    return strerror_r(error, buffer, sizeof buffer);
}

/// The names of all entries of a folder, in order. Qt's own list loses its descriptor when it finds
/// no memory.
QStringList namesIn(const std::string& path) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
    QStringList names;
    while (const dirent64* entry = folder ? readdir64(folder.get()) : nullptr) {
        names << QFile::decodeName(entry->d_name);
    }
    names.sort();
    return names;
}

/// Gives a file another name that no file has yet. Returns 0 or errno; EEXIST for a name in use.
int nameOnce(const std::string& from, const std::string& to) {
    if (link(from.c_str(), to.c_str()) == 0) {
        unlink(from.c_str());
        return 0;
    }
    if (errno == EEXIST || errno == ENOSPC || errno == EROFS) {
        return errno;
    }
    // A file system without hard links.
    if (access(to.c_str(), F_OK) == 0) {
        return EEXIST;
    }
    return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

std::string nameFor(time_t when, const std::string& why, int number) {
    struct tm local;
    localtime_r(&when, &local);
    char stamp[32];
    strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    std::string name = std::string(stamp) + '-' + why;
    if (number > 1) {
        name += '-' + std::to_string(number);
    }
    return name + ".pcapng";
}

}  // namespace

RecordFolder::RecordFolder(const std::string& folder) : path(folder + '/'), fd(-1), dumpsSeen(0) {
    std::lock_guard<std::mutex> lock(dumpMutex);
    dumpsSeen = dumpsTaken;
}

RecordFolder::~RecordFolder() {
    giveUp();
}

bool RecordFolder::begin(std::string* problem) {
    static std::atomic<unsigned> files(0);
    giveUp();
    errno = 0;
    QDir().mkpath(text(path));
    removeLeftovers();
    partName = path + ".micro800-" + std::to_string(getpid()) + '-' +
               std::to_string(files.fetch_add(1)) + ".part";
    fd = open(partName.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode);
    return fd >= 0 || fail("can not write to " + path, problem);
}

bool RecordFolder::write(const std::vector<unsigned char>& bytes, std::string* problem) {
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 1) {
            return fail("can not write a recording to " + path, problem);
        }
        written += static_cast<size_t>(count);
    }
    return true;
}

bool RecordFolder::finish(time_t when, const std::string& why, std::string* problem) {
    // A panel that is switched off right now is to have the whole file or none.
    const bool kept = fsync(fd) == 0;
    const int keepError = errno;
    close(fd);
    fd = -1;
    int failure = kept ? EEXIST : keepError;
    std::string name;
    for (int number = 1; kept && failure == EEXIST && number <= kMostSuffixes; ++number) {
        name = nameFor(when, why, number);
        failure = nameOnce(partName, path + name);
    }
    if (failure != 0) {
        errno = failure;
        return fail("can not finish a recording in " + path, problem);
    }
    partName.clear();
    makeRoom(name);
    return true;
}

bool RecordFolder::fail(const std::string& what, std::string* problem) {
    *problem = what + ": " + systemText(errno);
    giveUp();
    return false;
}

void RecordFolder::giveUp() {
    if (fd >= 0) {
        close(fd);
        fd = -1;
    }
    if (!partName.empty()) {
        unlink(partName.c_str());
        partName.clear();
    }
}

/// Files that processes had begun which are no more.
void RecordFolder::removeLeftovers() const {
    const QDir folder(text(path));
    const QStringList names = namesIn(path);
    for (int i = 0; i < names.size(); ++i) {
        QRegExp pattern(QLatin1String("\\.micro800-(\\d+)-\\d+\\.part"));
        if (pattern.exactMatch(names.at(i)) && !ProcessIsRunning(pattern.cap(1).toLongLong())) {
            QFile::remove(folder.filePath(names.at(i)));
        }
    }
}

/// Removes the oldest recordings until the limits are met; the newest stays in any case.
void RecordFolder::makeRoom(const std::string& newest) const {
    const QDir folder(text(path));
    const QRegExp pattern(QLatin1String("\\d{8}-\\d{6}-[a-z0-9-]+\\.pcapng"));
    const QStringList names = namesIn(path);
    QStringList others;
    long long bytes = QFileInfo(folder.filePath(text(newest))).size();
    for (int i = 0; i < names.size(); ++i) {
        const QFileInfo file(folder.filePath(names.at(i)));
        if (pattern.exactMatch(names.at(i)) && names.at(i) != text(newest) && file.isFile()) {
            others << names.at(i);
            bytes += file.size();
        }
    }
    for (int i = 0; i < others.size(); ++i) {
        if (others.size() - i < kMostFiles && bytes <= kMostBytes) {
            return;
        }
        const QString name = folder.filePath(others.at(i));
        bytes -= QFileInfo(name).size();
        QFile::remove(name);
    }
}

bool RecordFolder::dumpAsked() {
    std::lock_guard<std::mutex> lock(dumpMutex);
    // One that cannot be removed would ask for ever.
    if (unlink((path + "dump").c_str()) == 0) {
        ++dumpsTaken;
    }
    const bool asked = dumpsTaken != dumpsSeen;
    dumpsSeen = dumpsTaken;
    return asked;
}
