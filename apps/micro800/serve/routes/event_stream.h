#ifndef APPS_MICRO800_SERVE_EVENT_STREAM_H
#define APPS_MICRO800_SERVE_EVENT_STREAM_H

#include "apps/micro800/serve/http/request_handler.h"
#include "apps/micro800/serve/live/live_model.h"

/// What one page gets of the events. It keeps a number: a page that is slow gets what changed
/// since, once, and not everything that it missed.
class EventStream : public EventSource {
 public:
    /// `lastEventId` is of the last event that the page had; empty for a new page, which gets
    /// what comes from now on. One that cannot be gone on from is told by an event "reset".
    EventStream(const LiveModel* model, const QString& lastEventId);

    QByteArray next() override;

 private:
    const LiveModel* const model;
    QByteArray opening;
    quint64 period;  ///< that the page knows everything up to
};

#endif
