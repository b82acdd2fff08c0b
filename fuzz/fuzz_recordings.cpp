// A recorder's file that somebody else wrote: what is read from it, told and shown.

#include <cstdint>

#include "apps/micro800/format/escape.h"
#include "apps/micro800/recording/capture.h"
#include "apps/micro800/recording/message_facts.h"
#include "apps/micro800/recording/story.h"

namespace {

void demand(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    (void)messageText(bytes, size % 2 == 0);
    Capture capture;
    QString problem;
    if (!parseCapture(bytes, &capture, &problem)) {
        demand(!problem.isEmpty());
        return 0;
    }
    // It contains nothing but the contents of the file.
    qint64 held = 0;
    for (const CaptureEntry& entry : capture.entries) {
        held += entry.bytes.size();
        (void)entryJson(entry);
    }
    demand(held <= qint64(size));
    const Story story = storyOf(capture);
    (void)storyJson(story);
    for (const QString& line : storyLines(story) + timeLines(capture)) {
        demand(!terminalText(line).contains(QLatin1Char('\n')));
    }
    return 0;
}
