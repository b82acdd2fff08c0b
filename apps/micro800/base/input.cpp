#include "apps/micro800/base/input.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QVector>
#include <cerrno>
#include <cstring>

#include "apps/micro800/base/problem.h"

namespace {

QVector<KeptInput> kept;

/// The descriptor that contains the input of this name; -1 when there is none.
int keptDescriptor(const QString& name) {
    for (const KeptInput& input : kept) {
        if (input.name == name) {
            return input.descriptor;
        }
    }
    return -1;
}

bool writeAll(int descriptor, const QByteArray& content) {
    for (int at = 0; at < content.size();) {
        const ssize_t count = write(descriptor, content.constData() + at,
                                    static_cast<std::size_t>(content.size() - at));
        if (count < 0) {
            return false;
        }
        at += static_cast<int>(count);
    }
    return true;
}

/// Without the flag that closes it at an exec: the copy reads it.
bool keep(const QString& name, const QByteArray& content) {
    const int descriptor = memfd_create("micro800-input", 0);
    if (descriptor < 0 || !writeAll(descriptor, content)) {
        return false;
    }
    kept.append({name, descriptor});
    return true;
}

QString shownName(const QString& name) {
    return name == QLatin1String(kStandardInput) ? QStringLiteral("standard input") : name;
}

bool openInput(const QString& name, int keptUnder, QFile* file) {
    if (keptUnder >= 0) {
        lseek(keptUnder, 0, SEEK_SET);
        return file->open(keptUnder, QIODevice::ReadOnly);
    }
    if (name == QLatin1String(kStandardInput)) {
        return file->open(STDIN_FILENO, QIODevice::ReadOnly);
    }
    file->setFileName(name);
    return file->open(QIODevice::ReadOnly);
}

bool isRegular(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

bool readInput(const QString& name, QByteArray* content, QString* problem) {
    const int keptUnder = keptDescriptor(name);
    QFile file;
    if (!openInput(name, keptUnder, &file)) {
        return fail(problem, QStringLiteral("%1: %2").arg(shownName(name), file.errorString()));
    }
    // A pipe gives a part at a time.
    content->clear();
    for (QByteArray part = file.read(kLargestInput + 1);
         !part.isEmpty() && content->size() <= kLargestInput; part = file.read(kLargestInput)) {
        *content += part;
    }
    if (file.error() != QFileDevice::NoError) {
        return fail(problem, QStringLiteral("%1: %2").arg(shownName(name), file.errorString()));
    }
    if (content->size() > kLargestInput) {
        return fail(problem, QStringLiteral("%1: larger than %2 bytes")
                                 .arg(shownName(name), QString::number(kLargestInput)));
    }
    const bool canBeReadAgain =
        keptUnder >= 0 || (name != QLatin1String(kStandardInput) && isRegular(file.handle()));
    if (!canBeReadAgain && !keep(name, *content)) {
        return fail(problem, QStringLiteral("%1: cannot be kept: %2")
                                 .arg(shownName(name), QString::fromLocal8Bit(strerror(errno))));
    }
    return true;
}

QVector<KeptInput> keptInputs() {
    return kept;
}

void adoptInput(const KeptInput& input) {
    kept.append(input);
}
