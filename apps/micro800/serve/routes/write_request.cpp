#include "apps/micro800/serve/routes/write_request.h"

#include <QJsonDocument>

#include "apps/micro800/format/value_format.h"
#include "apps/micro800/serve/http/json_reply.h"

namespace {

bool refuse(HttpReply* problem, int status, const QString& text) {
    *problem = writeProblem(status, text);
    return false;
}

bool isJson(const HttpRequest& request) {
    const QByteArray* type = request.header("content-type");
    return type && type->split(';').first().trimmed().toLower() == "application/json";
}

}  // namespace

HttpReply writeProblem(int status, const QString& problem) {
    return jsonReply(status, {{QStringLiteral("ok"), false}, {QStringLiteral("problem"), problem}});
}

HttpReply writeDone(const QString& before, const QString& after) {
    return jsonReply(200, {{QStringLiteral("ok"), true},
                           {QStringLiteral("old"), before},
                           {QStringLiteral("new"), after}});
}

bool parseWriteRequest(const HttpRequest& request, const LiveModel& model, WriteOrder* order,
                       HttpReply* problem) {
    if (!isJson(request)) {
        return refuse(problem, 415, QStringLiteral("the content type is not application/json"));
    }
    const QJsonObject object = QJsonDocument::fromJson(request.body).object();
    const QJsonValue address = object.value(QStringLiteral("address"));
    const QJsonValue value = object.value(QStringLiteral("value"));
    if (object.size() != 2 || !address.isString() || !value.isString()) {
        return refuse(problem, 400,
                      QStringLiteral("the body is not {\"address\": TEXT, \"value\": TEXT}"));
    }
    order->index = model.indexOf(address.toString());
    if (order->index < 0) {
        return refuse(problem, 404, QStringLiteral("no such tag on this page"));
    }
    const TagType& type = *model.facts().addresses.at(order->index).type;
    QString why;
    if (!appendValue(type, value.toString(), &order->bytes, &why)) {
        return refuse(problem, 400, why);
    }
    order->text = valueText(type, order->bytes, 1);
    order->peer = request.peer;
    return true;
}
