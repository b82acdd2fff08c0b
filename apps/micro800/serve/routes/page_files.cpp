#include "apps/micro800/serve/routes/page_files.h"

namespace {

const char kStartFile[] = "index.html";

QByteArray typeOf(const QString& name) {
    const QString ending = name.section(QLatin1Char('.'), -1);
    if (ending == QLatin1String("html")) {
        return "text/html; charset=utf-8";
    }
    if (ending == QLatin1String("css")) {
        return "text/css; charset=utf-8";
    }
    if (ending == QLatin1String("js")) {
        return "text/javascript; charset=utf-8";
    }
    return ending == QLatin1String("svg") ? "image/svg+xml" : "application/octet-stream";
}

}  // namespace

bool pageFileReply(const QString& path, HttpReply* reply) {
    const QString name = path == QLatin1String("/") ? QLatin1String(kStartFile) : path.mid(1);
    for (const PageFile* file = kPageFiles; file->name; ++file) {
        if (name == QLatin1String(file->name)) {
            reply->status = 200;
            reply->type = typeOf(name);
            reply->body = QByteArray::fromRawData(file->text, file->size);
            // Another build may use the same address tomorrow.
            reply->add("Cache-Control", "no-cache");
            return true;
        }
    }
    return false;
}
