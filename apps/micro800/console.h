#ifndef APPS_MICRO800_CONSOLE_H
#define APPS_MICRO800_CONSOLE_H

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
/// whatever the locale is. Does not own the streams.
class Console {
 public:
    Console(std::FILE* out, std::FILE* err);

    void line(const QString& text);
    /// One object on one line.
    void json(const QJsonObject& object);
    void error(const QString& text);

    /// Hands the lines so far to the reader of a pipe.
    void flush();
    /// Whether every line got out; to be asked at the program's end.
    bool allWritten();

    /// Whether values go to a terminal.
    bool outIsTerminal() const;

 private:
    void put(std::FILE* stream, const QByteArray& utf8);

    std::FILE* out_;
    std::FILE* err_;
    bool failed_ = false;
};

/// Says what is wrong with the command line and where help is; returns kExitUsage. `command` is
/// empty when it is about no subcommand.
int wrongUsage(Console& console, const QString& command, const QString& problem);

#endif
