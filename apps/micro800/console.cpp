#include "apps/micro800/console.h"

#include <unistd.h>

#include <QJsonDocument>

Console::Console(std::FILE* out, std::FILE* err) : out_(out), err_(err) {}

void Console::put(std::FILE* stream, const QByteArray& utf8) {
    const auto size = static_cast<std::size_t>(utf8.size());
    if (std::fwrite(utf8.constData(), 1, size, stream) != size)
        failed_ = true;
}

void Console::line(const QString& text) {
    put(out_, text.toUtf8() + '\n');
}

void Console::json(const QJsonObject& object) {
    put(out_, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void Console::error(const QString& text) {
    flush();  // so that the two streams stay in order where they go to the same place
    put(err_, text.toUtf8() + '\n');
    std::fflush(err_);
}

void Console::flush() {
    if (std::fflush(out_) != 0)
        failed_ = true;
}

bool Console::allWritten() {
    flush();
    return !failed_;
}

bool Console::outIsTerminal() const {
    const int descriptor = fileno(out_);
    return descriptor >= 0 && isatty(descriptor) == 1;
}

int wrongUsage(Console& console, const QString& command, const QString& problem) {
    const QString name =
        command.isEmpty() ? QStringLiteral("micro800") : QStringLiteral("micro800 %1").arg(command);
    console.error(QStringLiteral("%1: %2").arg(name, problem));
    console.error(QStringLiteral("Try '%1 --help'.").arg(name));
    return kExitUsage;
}
