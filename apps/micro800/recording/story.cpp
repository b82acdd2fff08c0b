#include "apps/micro800/recording/story.h"

#include <QDateTime>
#include <QVector>
#include <algorithm>

#include "apps/micro800/recording/message_facts.h"

namespace {

const qint64 kMicrosPerMs = 1000;
const int kLabelWidth = 8;

QDateTime timeOf(qint64 micros) {
    return QDateTime::fromMSecsSinceEpoch(micros / kMicrosPerMs);
}

QString clockText(qint64 micros) {
    return timeOf(micros).toString(QStringLiteral("HH:mm:ss.")) +
           QStringLiteral("%1").arg(micros % 1000000, 6, 10, QLatin1Char('0'));
}

QString utcText(qint64 micros) {
    return timeOf(micros).toUTC().toString(Qt::ISODateWithMs);
}

QString spanText(qint64 micros) {
    return QStringLiteral("%1 ms").arg(double(micros) / kMicrosPerMs, 0, 'f', 1);
}

QString whyText(const QString& why) {
    if (why == QLatin1String("connection-lost")) {
        return QStringLiteral("the connection was lost");
    }
    if (why == QLatin1String("connect-failed")) {
        return QStringLiteral("the controller could not be reached");
    }
    if (why == QLatin1String("error-text")) {
        return QStringLiteral("a new error text was given");
    }
    if (why == QLatin1String("dump")) {
        return QStringLiteral("somebody asked for it");
    }
    if (why == QLatin1String("end")) {
        return QStringLiteral("the driver ended");
    }
    return why.isEmpty() ? QStringLiteral("not told") : why;
}

/// A request that says goodbye is not what a reader looks for.
bool isFarewell(const MessageFacts& facts) {
    return facts.name == QLatin1String("Forward Close") ||
           facts.name == QLatin1String("UnRegisterSession");
}

/// Goes through the messages and keeps what the last request and those before it came to.
class Teller {
 public:
    void take(const CaptureEntry& entry) {
        if (entry.kind == CaptureEntry::kRequest) {
            takeRequest(entry);
        } else if (entry.kind == CaptureEntry::kReply) {
            takeReply(entry);
        } else if (entry.text.startsWith(QLatin1String("no whole answer"))) {
            endWait(entry.micros);
        }
    }

    Story finish(qint64 end) {
        story.end = end;
        endWait(end);
        if (answered && !spans.isEmpty()) {
            spans.removeLast();
        }
        story.answersBefore = spans.size();
        if (!spans.isEmpty()) {
            std::sort(spans.begin(), spans.end());
            story.medianBefore = spans.at(spans.size() / 2);
            story.longestBefore = spans.last();
        }
        return story;
    }

 private:
    /// The request stays without an answer, from this time on at the latest.
    void endWait(qint64 micros) {
        if (asked >= 0 && !answered && story.lastTook < 0) {
            story.lastTook = micros - asked;
        }
    }

    void takeRequest(const CaptureEntry& entry) {
        const MessageFacts facts = messageFacts(entry.bytes, false);
        saysGoodbye = isFarewell(facts);
        if (saysGoodbye) {
            return;
        }
        asked = entry.micros;
        answered = false;
        story.lastRequest = messageText(entry.bytes, false);
        story.tag = facts.tag;
        story.lastAnswer.clear();
        story.lastTook = -1;
    }

    void takeReply(const CaptureEntry& entry) {
        if (asked < 0 || answered || saysGoodbye) {
            return;
        }
        const MessageFacts facts = messageFacts(entry.bytes, true);
        answered = true;
        story.lastAnswer = messageText(entry.bytes, true);
        story.lastTook = entry.micros - asked;
        spans.append(story.lastTook);
        if (facts.good) {
            story.lastGood = entry.micros;
            story.lastGoodTag = story.tag;
        }
    }

    Story story;
    QVector<qint64> spans;  ///< from request to answer
    qint64 asked = -1;
    bool answered = false;
    bool saysGoodbye = false;
};

QString labelled(const char* label, const QString& text) {
    return QStringLiteral("  ") + QString::fromLatin1(label).leftJustified(kLabelWidth) + text;
}

QJsonValue msJson(qint64 micros) {
    return micros < 0 ? QJsonValue() : QJsonValue(double(micros) / kMicrosPerMs);
}

QJsonValue timeJson(qint64 micros) {
    return micros < 0 ? QJsonValue() : QJsonValue(utcText(micros));
}

QString entryText(const CaptureEntry& entry) {
    if (entry.kind == CaptureEntry::kEvent) {
        return entry.text;
    }
    return messageText(entry.bytes, entry.kind == CaptureEntry::kReply);
}

const char* entryMark(CaptureEntry::Kind kind) {
    return kind == CaptureEntry::kRequest ? ">" : kind == CaptureEntry::kReply ? "<" : "*";
}

}  // namespace

Story storyOf(const Capture& capture) {
    Teller teller;
    for (const CaptureEntry& entry : capture.entries) {
        teller.take(entry);
    }
    Story story = teller.finish(capture.entries.isEmpty() ? -1 : capture.entries.last().micros);
    story.why = capture.why;
    story.detail = capture.detail;
    return story;
}

QStringList storyLines(const Story& story) {
    QStringList lines;
    lines << labelled(
        "when", story.end < 0 ? QStringLiteral("not told")
                              : timeOf(story.end).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    lines << labelled("why", story.detail.isEmpty()
                                 ? whyText(story.why)
                                 : whyText(story.why) + QStringLiteral(": ") + story.detail);
    if (story.lastRequest.isEmpty()) {
        return lines << labelled("last", QStringLiteral("no request is in it"));
    }
    lines << labelled(
        "last",
        QStringLiteral("%1, %2").arg(
            story.lastRequest,
            story.lastAnswer.isEmpty()
                ? QStringLiteral("no answer for %1").arg(spanText(story.lastTook))
                : QStringLiteral("%1 after %2").arg(story.lastAnswer, spanText(story.lastTook))));
    if (story.answersBefore > 0) {
        lines << labelled(
            "before", QStringLiteral("%1 answers, half of them within %2, the "
                                     "slowest after %3")
                          .arg(QString::number(story.answersBefore), spanText(story.medianBefore),
                               spanText(story.longestBefore)));
    }
    if (story.lastGood >= 0) {
        lines << labelled("good", QStringLiteral("the last good answer at %1%2")
                                      .arg(clockText(story.lastGood),
                                           story.lastGoodTag.isEmpty()
                                               ? QString()
                                               : QStringLiteral(", %1").arg(story.lastGoodTag)));
    }
    return lines;
}

QJsonObject storyJson(const Story& story) {
    return {
        {QStringLiteral("why"), story.why},
        {QStringLiteral("detail"), story.detail},
        {QStringLiteral("end"), timeJson(story.end)},
        {QStringLiteral("last_request"), story.lastRequest},
        {QStringLiteral("tag"), story.tag},
        {QStringLiteral("last_answer"), story.lastAnswer},
        {QStringLiteral("last_ms"), msJson(story.lastTook)},
        {QStringLiteral("answers_before"), story.answersBefore},
        {QStringLiteral("median_before_ms"), msJson(story.medianBefore)},
        {QStringLiteral("longest_before_ms"), msJson(story.longestBefore)},
        {QStringLiteral("last_good"), timeJson(story.lastGood)},
        {QStringLiteral("last_good_tag"), story.lastGoodTag},
    };
}

QStringList timeLines(const Capture& capture) {
    QStringList lines;
    qint64 before = capture.entries.isEmpty() ? 0 : capture.entries.first().micros;
    for (const CaptureEntry& entry : capture.entries) {
        const QString since = QStringLiteral("+") + spanText(entry.micros - before);
        lines << QStringLiteral("%1 %2 %3 %4")
                     .arg(clockText(entry.micros), since.rightJustified(12),
                          QLatin1String(entryMark(entry.kind)), entryText(entry));
        before = entry.micros;
    }
    return lines;
}

QJsonObject entryJson(const CaptureEntry& entry) {
    const char* const kinds[] = {"event", "request", "reply"};
    return {
        {QStringLiteral("at"), utcText(entry.micros)},
        {QStringLiteral("micros"), double(entry.micros)},
        {QStringLiteral("kind"), QLatin1String(kinds[entry.kind])},
        {QStringLiteral("text"), entryText(entry)},
    };
}
