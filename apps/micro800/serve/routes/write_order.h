#ifndef APPS_MICRO800_SERVE_WRITE_ORDER_H
#define APPS_MICRO800_SERVE_WRITE_ORDER_H

#include <QByteArray>
#include <QString>
#include <memory>

#include "apps/micro800/serve/http/deferred_reply.h"

/// A write that passed every check.
struct WriteOrder {
    int index = -1;    ///< of the tag's row
    QByteArray bytes;  ///< of the value, as the controller has them
    QString text;      ///< of the value, as read prints it
    QString peer;      ///< the sender of the request
    std::shared_ptr<DeferredReply> reply;
};

#endif
