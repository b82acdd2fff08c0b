#ifndef APPS_MICRO800_SERVE_JSON_REPLY_H
#define APPS_MICRO800_SERVE_JSON_REPLY_H

#include <QJsonObject>

#include "apps/micro800/serve/http/http_message.h"

/// A reply of the interface for programs: JSON that nobody keeps.
HttpReply jsonReply(int status, const QJsonObject& object);
/// {"problem": TEXT}
HttpReply problemReply(int status, const QString& problem);

#endif
