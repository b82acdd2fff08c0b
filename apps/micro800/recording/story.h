#ifndef APPS_MICRO800_RECORDING_STORY_H
#define APPS_MICRO800_RECORDING_STORY_H

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "apps/micro800/recording/capture.h"

/// The summary of a recording for a reader. Times of day are
/// microseconds since 1970, spans are microseconds; -1 means none.
struct Story {
    QString why;
    QString detail;
    qint64 end = -1;        ///< of the recording
    QString lastRequest;    ///< "Read Tag COUNTER"
    QString tag;            ///< that it was for
    QString lastAnswer;     ///< to it; empty without one
    qint64 lastTook = -1;   ///< until that answer, or until the end without one
    int answersBefore = 0;  ///< to the requests before it
    qint64 medianBefore = -1;
    qint64 longestBefore = -1;
    qint64 lastGood = -1;  ///< when the last good answer came
    QString lastGoodTag;
};

Story storyOf(const Capture& capture);

/// Some lines in plain words.
QStringList storyLines(const Story& story);
QJsonObject storyJson(const Story& story);

/// The recording as a time line: one line an entry, with the time of day and the time since the
/// entry before.
QStringList timeLines(const Capture& capture);
/// One entry of it: at (UTC), kind, and text.
QJsonObject entryJson(const CaptureEntry& entry);

#endif
