#include "apps/micro800/reports/plan_report.h"

#include <QJsonArray>
#include <algorithm>
#include <cmath>

#include "apps/micro800/polling/poll_advice.h"
#include "apps/micro800/terminal/fact_list.h"

namespace {

const int kMostParts = 12;
const int kBarWidth = 40;
const int kLabelWidth = 32;
const int kMsASecond = 1000;

QString msText(double ms) {
    return ms < kMsASecond ? QStringLiteral("%1 ms").arg(ms, 0, 'f', 1)
                           : QStringLiteral("%1 s").arg(ms / kMsASecond, 0, 'f', 2);
}

QJsonValue roundedMs(double ms) {
    return std::round(ms * kMsASecond) / kMsASecond;
}

Fact listFact(const PollPlan& plan) {
    const int bytes = plan.lineBytes();
    const QString text = plan.fits()
                             ? QStringLiteral("%1 of %2 bytes").arg(bytes).arg(kListLimit)
                             : QStringLiteral(
                                   "%1 of %2 bytes: too long, so that NOTHING IS POLLED and every "
                                   "read waits for the controller")
                                   .arg(bytes)
                                   .arg(kListLimit);
    return {"Session list", "list_bytes", bytes, text};
}

QVector<Fact> planFacts(const PollPlan& plan, int addresses, const ReadTime& read) {
    const PollCost cost = plan.cost();
    const double pass = cost.ms(read.ms);
    return {
        numberFact("Addresses", "addresses", addresses, QString::number(addresses)),
        numberFact("Entries", "entries", cost.entries, QString::number(cost.entries)),
        numberFact("Requests per pass", "requests", cost.requests, QString::number(cost.requests)),
        {"Time of a read", "read_ms", roundedMs(read.ms),
         QStringLiteral("%1 (%2)").arg(msText(read.ms), read.source)},
        {"Time of a pass", "pass_ms", roundedMs(pass), msText(pass)},
        {"Refresh of a tag", "refresh_ms", roundedMs(pass),
         QStringLiteral("every %1, once per pass").arg(msText(pass))},
        listFact(plan),
    };
}

QString barLine(const QString& label, const PollCost& cost, double passMs, double readMs) {
    const double share = passMs > 0 ? cost.ms(readMs) / passMs : 0;
    const int length = std::max(1, static_cast<int>(std::lround(share * kBarWidth)));
    return QStringLiteral("  %1 %2 %3 %4 %  %5")
        .arg(label.left(kLabelWidth), -kLabelWidth)
        .arg(QStringLiteral("%1 req").arg(cost.requests), 9)
        .arg(msText(cost.ms(readMs)), 9)
        .arg(std::lround(share * 100), 3)
        .arg(QString(length, QLatin1Char('#')));
}

void printParts(const PollPlan& plan, double readMs, Console& console) {
    const QVector<PollPart> parts = partsOf(plan);
    const double passMs = plan.cost().ms(readMs);
    console.line(QString());
    console.line(QStringLiteral("Parts of a pass"));
    PollCost rest;
    for (int i = 0; i < parts.size(); ++i) {
        if (i < kMostParts) {
            console.line(barLine(parts.at(i).label, parts.at(i).cost, passMs, readMs));
        } else {
            rest.add(parts.at(i).cost);
        }
    }
    if (rest.entries > 0) {
        console.line(barLine(QStringLiteral("%1 others").arg(parts.size() - kMostParts), rest,
                             passMs, readMs));
    }
}

QString gainText(const PollCost& before, const PollCost& after, double readMs) {
    return QStringLiteral("%1 requests -> %2, %3 -> %4, %5 bytes of the list -> %6")
        .arg(QString::number(before.requests), QString::number(after.requests),
             msText(before.ms(readMs)), msText(after.ms(readMs)), QString::number(before.listBytes),
             QString::number(after.listBytes));
}

void printAdvice(const PollPlan& plan, double readMs, Console& console) {
    const QVector<PollAdvice> advice = adviceFor(plan, readMs);
    if (advice.isEmpty()) {
        return;
    }
    console.line(QString());
    console.line(QStringLiteral("Improvements"));
    for (const PollAdvice& one : advice) {
        console.line(QStringLiteral("  ") + one.text);
        console.line(QStringLiteral("    ") + gainText(one.before, one.after, readMs));
    }
    console.line(QStringLiteral("  all of it"));
    console.line(QStringLiteral("    ") + gainText(plan.cost(), costAfter(plan, advice), readMs));
}

QJsonObject costJson(const PollCost& cost, double readMs) {
    return {{QStringLiteral("entries"), cost.entries},
            {QStringLiteral("requests"), cost.requests},
            {QStringLiteral("list_bytes"), cost.listBytes},
            {QStringLiteral("ms"), roundedMs(cost.ms(readMs))}};
}

QJsonObject planJson(const PollPlan& plan, int addresses, const ReadTime& read) {
    QJsonObject object = factsJson(planFacts(plan, addresses, read));
    object[QStringLiteral("list_limit")] = kListLimit;
    object[QStringLiteral("polled")] = plan.fits();
    object[QStringLiteral("read_source")] = read.source;
    QJsonArray parts;
    for (const PollPart& part : partsOf(plan)) {
        QJsonObject one = costJson(part.cost, read.ms);
        one[QStringLiteral("part")] = part.label;
        parts.append(one);
    }
    object[QStringLiteral("parts")] = parts;
    QJsonArray advice;
    for (const PollAdvice& piece : adviceFor(plan, read.ms)) {
        advice.append(QJsonObject{{QStringLiteral("advice"), piece.text},
                                  {QStringLiteral("before"), costJson(piece.before, read.ms)},
                                  {QStringLiteral("after"), costJson(piece.after, read.ms)}});
    }
    object[QStringLiteral("advice")] = advice;
    return object;
}

}  // namespace

void printPlan(const PollPlan& plan, int addresses, const ReadTime& read, bool json,
               Console& console) {
    if (json) {
        console.json(planJson(plan, addresses, read));
        return;
    }
    printFacts(planFacts(plan, addresses, read), false, console);
    printParts(plan, read.ms, console);
    printAdvice(plan, read.ms, console);
}
