#include "apps/micro800/serve/http/json_reply.h"

#include "apps/micro800/format/escape.h"

HttpReply jsonReply(int status, const QJsonObject& object) {
    HttpReply reply;
    reply.status = status;
    reply.type = "application/json";
    reply.body = jsonText(object) + '\n';
    reply.add("Cache-Control", "no-store");
    return reply;
}

HttpReply problemReply(int status, const QString& problem) {
    return jsonReply(status, {{QStringLiteral("problem"), problem}});
}
