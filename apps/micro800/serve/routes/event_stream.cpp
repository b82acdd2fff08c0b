#include "apps/micro800/serve/routes/event_stream.h"

EventStream::EventStream(const LiveModel* shown, const QString& lastEventId)
    : model(shown), opening("retry: 1000\n\n"), period(model->lastPeriod()) {
    quint64 known = 0;
    if (lastEventId.isEmpty()) {
        return;
    }
    if (model->periodOf(lastEventId, &known)) {
        period = known;
    } else {
        opening += "event: reset\ndata: {}\n\n";
    }
}

QByteArray EventStream::next() {
    QByteArray events = opening;
    opening.clear();
    return events + model->eventsSince(&period);
}
