#ifndef APPS_MICRO800_TERMINAL_CONSOLE_H
#define APPS_MICRO800_TERMINAL_CONSOLE_H

#include <QJsonObject>
#include <QString>
#include <cstdio>

/// What the program ends with.
enum ExitCode {
    kExitOk = 0,      ///< everything asked for was done
    kExitFailed = 1,  ///< something failed: a tag, the plugin file, the project
    kExitUsage = 2,   ///< the command line was wrong; nothing was sent
};

/// Where the program's lines go: values to one stream, errors to the other, both in UTF-8
/// in any locale. Does not own the streams.
class Console {
 public:
    Console(std::FILE* values, std::FILE* errors);

    /// One line, for any text: terminal controls are shown as text (format/escape.h).
    void line(const QString& text);
    /// Lines of this program's own, as they are: a help page.
    void page(const QString& text);
    /// One object on one line, without anything that a terminal would obey.
    void json(const QJsonObject& object);
    /// One line, as line().
    void error(const QString& text);

    /// Hands the lines so far to the reader of a pipe.
    void flush();
    /// Whether every line got out; to be asked at the program's end.
    bool allWritten();
    /// Whether a line did not get out, as far as is known without a flush: no further one will.
    bool hasFailed() const { return failed; }
    /// The output is gone, as somebody else has found out.
    void lose() { failed = true; }

    /// Whether values go to a terminal.
    bool outIsTerminal() const;
    /// Whether that terminal can move its cursor: one of type "dumb" takes lines only.
    bool outCanMoveItsCursor() const;

    // ---- the status line: one line below all others, on the error stream

    /// Whether there is one: errors go to a terminal that can take a line back.
    bool showsStatus() const;
    /// The number of characters that fit.
    int statusWidth() const;
    /// Shows this text as the status line in place of the one before; an empty one takes it away.
    /// Nothing happens where there is none. Every other output takes it away first.
    void setStatus(const QString& text);

 private:
    void put(std::FILE* stream, const QByteArray& utf8);

    std::FILE* out;
    std::FILE* err;
    bool failed = false;
    bool statusShown = false;
};

/// Says what is wrong with the command line and where help is; returns kExitUsage. `command` is
/// empty when it is about no subcommand.
int wrongUsage(Console& console, const QString& command, const QString& problem);

#endif
