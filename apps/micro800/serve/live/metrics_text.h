#ifndef APPS_MICRO800_SERVE_METRICS_TEXT_H
#define APPS_MICRO800_SERVE_METRICS_TEXT_H

#include <QByteArray>

#include "apps/micro800/serve/live/poll_figures.h"
#include "apps/micro800/serve/live/tag_board.h"

/// What the server itself adds to the metrics.
struct ServerFigures {
    qint64 historyBytes = 0;
    int streams = 0;
    qint64 now = 0;
};

/// Everything that was counted, in the text format of Prometheus (version 0.0.4).
QByteArray metricsText(const TagBoard& board, const PollFigures& figures,
                       const ServerFigures& server);

#endif
