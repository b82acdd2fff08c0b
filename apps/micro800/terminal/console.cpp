#include "apps/micro800/terminal/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include "apps/micro800/format/escape.h"

namespace {

/// Clears the line from here on (ECMA-48: EL).
const char kClearRest[] = "\033[K";

const int kUsualWidth = 80;

bool isTerminal(std::FILE* stream) {
    const int descriptor = fileno(stream);
    return descriptor >= 0 && isatty(descriptor) == 1;
}

bool canMoveItsCursor(std::FILE* stream) {
    const QByteArray type = qgetenv("TERM");
    return isTerminal(stream) && !type.isEmpty() && type != "dumb";
}

}  // namespace

Console::Console(std::FILE* values, std::FILE* errors) : out(values), err(errors) {}

void Console::put(std::FILE* stream, const QByteArray& utf8) {
    setStatus(QString());
    const auto size = static_cast<std::size_t>(utf8.size());
    if (std::fwrite(utf8.constData(), 1, size, stream) != size) {
        failed = true;
    }
}

void Console::line(const QString& text) {
    put(out, terminalText(text).toUtf8() + '\n');
}

void Console::page(const QString& text) {
    put(out, text.toUtf8() + '\n');
}

void Console::json(const QJsonObject& object) {
    put(out, jsonText(object) + '\n');
}

void Console::error(const QString& text) {
    flush();  // so that the two streams stay in order where they go to the same place
    put(err, terminalText(text).toUtf8() + '\n');
    std::fflush(err);
}

void Console::flush() {
    if (std::fflush(out) != 0) {
        failed = true;
    }
}

bool Console::allWritten() {
    flush();
    return !failed;
}

bool Console::outIsTerminal() const {
    return isTerminal(out);
}

bool Console::outCanMoveItsCursor() const {
    return canMoveItsCursor(out);
}

bool Console::showsStatus() const {
    return canMoveItsCursor(err);
}

int Console::statusWidth() const {
    winsize size = {};
    const bool known = ioctl(fileno(err), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    // The last column stays free: some terminals go on to the next line there.
    return (known ? size.ws_col : kUsualWidth) - 1;
}

void Console::setStatus(const QString& text) {
    if ((text.isEmpty() && !statusShown) || !showsStatus()) {
        return;
    }
    statusShown = !text.isEmpty();
    flush();
    std::fputs((QByteArray("\r") + text.toUtf8() + kClearRest).constData(), err);
    std::fflush(err);
}

int wrongUsage(Console& console, const QString& command, const QString& problem) {
    const QString name =
        command.isEmpty() ? QStringLiteral("micro800") : QStringLiteral("micro800 %1").arg(command);
    console.error(QStringLiteral("%1: %2").arg(name, problem));
    console.error(QStringLiteral("Try '%1 --help'.").arg(name));
    return kExitUsage;
}
