#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "apps/micro800/commands/command.h"
#include "apps/micro800/recording/capture.h"
#include "apps/micro800/recording/story.h"

namespace {

struct NamedStory {
    QString name;
    Story story;
};

/// The recordings of a folder that can be read, oldest first; of the others it says why not.
QVector<NamedStory> storiesOf(const QDir& dir, const QStringList& names, Console& console) {
    QVector<NamedStory> stories;
    for (const QString& name : names) {
        Capture capture;
        QString problem;
        if (readCapture(dir.filePath(name), &capture, &problem)) {
            stories.append({name, storyOf(capture)});
        } else {
            console.error(QStringLiteral("micro800: %1").arg(problem));
        }
    }
    std::stable_sort(stories.begin(), stories.end(), [](const NamedStory& a, const NamedStory& b) {
        return a.story.end < b.story.end;
    });
    return stories;
}

/// False when there is no recording, or one cannot be read.
bool listFolder(const QString& folder, bool json, Console& console) {
    const QDir dir(folder);
    const QStringList names = dir.entryList({QStringLiteral("*.pcapng")}, QDir::Files, QDir::Name);
    if (names.isEmpty()) {
        console.error(QStringLiteral("micro800: %1: no recordings").arg(folder));
        return false;
    }
    const QVector<NamedStory> stories = storiesOf(dir, names, console);
    for (const NamedStory& one : stories) {
        if (json) {
            QJsonObject object = storyJson(one.story);
            object.insert(QStringLiteral("file"), dir.filePath(one.name));
            console.json(object);
            continue;
        }
        console.line(one.name);
        for (const QString& line : storyLines(one.story)) {
            console.line(line);
        }
    }
    return stories.size() == names.size();
}

bool showFile(const QString& file, bool json, Console& console) {
    Capture capture;
    QString problem;
    if (!readCapture(file, &capture, &problem)) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return false;
    }
    if (json) {
        for (const CaptureEntry& entry : capture.entries) {
            console.json(entryJson(entry));
        }
        return true;
    }
    for (const QString& line : timeLines(capture) + storyLines(storyOf(capture))) {
        console.line(line);
    }
    return true;
}

}  // namespace

CommandHelp recordHelp() {
    CommandHelp help;
    help.name = QStringLiteral("record");
    help.summary = QStringLiteral("shows what the driver's flight recorder wrote");
    help.synopsis << QStringLiteral("[OPTION...] DIR|FILE");
    help.description
        << QStringLiteral(
               "The driver records if MICRO800_RECORD of the runtime's environment is a directory, "
               "or with --record of 'micro800 read', 'write' or 'watch'. It writes its last "
               "messages to a file when the connection is lost, when it returns an error text that "
               "it did not return within the minute before, when somebody makes a file 'dump' in "
               "the directory, and at the end.")
        << QStringLiteral(
               "For a directory, shows the time and the reason of each recording, the last request "
               "and its result, the times of the replies before it, and the last good reply. For a "
               "file, shows a time line: > for a request, < for a reply, * for an event of the "
               "driver. Wireshark opens the same file.")
        << QStringLiteral(
               "The exit status is 1 if there is no recording, or if one cannot be read.");
    help.options << OptionSpec{QStringLiteral("json"), QString(),
                               QStringLiteral("Prints one JSON object for each recording of a "
                                              "directory, or for each entry of a file."),
                               QString()};
    help.examples << QStringLiteral(
                         "micro800 record /var/log/panel\n"
                         "20261121-031207-connection-lost.pcapng\n"
                         "  when    2026-11-21 03:12:07\n"
                         "  why     the connection was lost: Internal: receive timeout\n"
                         "  last    Read Tag COUNTER, no answer for 3000.4 ms\n"
                         "  before  2041 answers, half of them within 6.1 ms, the slowest after "
                         "48.0 ms\n"
                         "  good    the last good answer at 03:12:04.113870, LEVEL")
                  << QStringLiteral(
                         "micro800 record /var/log/panel/20261121-031207-connection-lost.pcapng");
    return help;
}

int runRecord(const CommandLine& line, Console& console) {
    if (line.positional().size() != 1) {
        return wrongUsage(console, QStringLiteral("record"),
                          QStringLiteral("one DIR or FILE is wanted"));
    }
    const QString path = line.positional().first();
    const bool json = line.isSet(QStringLiteral("json"));
    const bool shown =
        QFileInfo(path).isDir() ? listFolder(path, json, console) : showFile(path, json, console);
    return shown ? kExitOk : kExitFailed;
}
