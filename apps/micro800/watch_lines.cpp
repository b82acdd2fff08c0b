// The watch as lines of text and of JSON.

#include <QDateTime>

#include "apps/micro800/tag_json.h"
#include "apps/micro800/watch_view.h"

namespace {

class LinesView : public WatchView {
 public:
    LinesView(Console& console, bool quiet) : console_(console), quiet_(quiet) {}

    void tell(const WatchedTag& tag, WatchEvent event) override {
        if (event == WatchEvent::kError) {
            console_.error(tag.error);
            return;
        }
        const QString time = QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz"));
        console_.line(time + QLatin1Char(' ') + tag.address.text + QLatin1String(" = ") +
                      tag.text());
    }
    void refresh(const WatchModel&, qint64) override { console_.flush(); }
    void end(const WatchModel& model, qint64 now) override {
        if (!quiet_)
            console_.line(model.summary(now));
        console_.flush();
    }

 private:
    Console& console_;
    const bool quiet_;
};

class JsonView : public WatchView {
 public:
    explicit JsonView(Console& console) : console_(console) {}

    void tell(const WatchedTag& tag, WatchEvent event) override {
        QJsonObject object = accessJson(tag.address, 1, tag.last, tag.bytes);
        object[QStringLiteral("at")] = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
        if (event == WatchEvent::kValue)
            object[QStringLiteral("source")] =
                QLatin1String(tag.fromCache() ? "cache" : "controller");
        console_.json(object);
        if (event == WatchEvent::kError)
            console_.error(tag.error);
    }
    void refresh(const WatchModel&, qint64) override { console_.flush(); }
    void end(const WatchModel&, qint64) override { console_.flush(); }

 private:
    Console& console_;
};

}  // namespace

std::unique_ptr<WatchView> makeLinesView(Console& console, bool quiet) {
    return std::make_unique<LinesView>(console, quiet);
}

std::unique_ptr<WatchView> makeJsonView(Console& console) {
    return std::make_unique<JsonView>(console);
}
