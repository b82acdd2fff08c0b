// The watch as lines of text, of JSON and of CSV.

#include <QDateTime>

#include "apps/micro800/plugin/tag_csv.h"
#include "apps/micro800/plugin/tag_json.h"
#include "apps/micro800/watch/watch_view.h"

namespace {

QString timeNow() {
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
}

class LinesView : public WatchView {
 public:
    LinesView(Console& output, bool withoutSummary, NumberBase numberBase)
        : console(output), quiet(withoutSummary), base(numberBase) {}

    void tell(const WatchedTag& tag, WatchEvent event) override {
        if (event == WatchEvent::kError) {
            console.error(tag.error);
            return;
        }
        const QString time = QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz"));
        console.line(time + QLatin1Char(' ') + tag.address.text + QLatin1String(" = ") +
                     tag.text(base));
    }
    void refresh(const WatchModel&, qint64) override { console.flush(); }
    void end(const WatchModel& model, qint64 now) override {
        if (!quiet) {
            console.line(model.summary(now));
        }
        console.flush();
    }

 private:
    Console& console;
    const bool quiet;
    const NumberBase base;
};

class JsonView : public WatchView {
 public:
    JsonView(Console& output, NumberBase numberBase) : console(output), base(numberBase) {}

    void tell(const WatchedTag& tag, WatchEvent event) override {
        QJsonObject object = accessJson(tag.address, 1, tag.last, tag.bytes, base);
        object[QStringLiteral("at")] = timeNow();
        if (event == WatchEvent::kValue) {
            object[QStringLiteral("source")] =
                QLatin1String(tag.fromCache() ? "cache" : "controller");
        }
        console.json(object);
        if (event == WatchEvent::kError) {
            console.error(tag.error);
        }
    }
    void refresh(const WatchModel&, qint64) override { console.flush(); }
    void end(const WatchModel&, qint64) override { console.flush(); }

 private:
    Console& console;
    const NumberBase base;
};

class CsvView : public WatchView {
 public:
    CsvView(Console& output, NumberBase numberBase) : console(output), base(numberBase) {
        console.line(accessCsvHeader() + QLatin1String(",at,source"));
    }

    void tell(const WatchedTag& tag, WatchEvent event) override {
        const char* source = event == WatchEvent::kError ? ""
                             : tag.fromCache()           ? "cache"
                                                         : "controller";
        console.line(accessCsv(tag.address, 1, tag.last, base) + QLatin1Char(',') + timeNow() +
                     QLatin1Char(',') + QLatin1String(source));
        if (event == WatchEvent::kError) {
            console.error(tag.error);
        }
    }
    void refresh(const WatchModel&, qint64) override { console.flush(); }
    void end(const WatchModel&, qint64) override { console.flush(); }

 private:
    Console& console;
    const NumberBase base;
};

}  // namespace

std::unique_ptr<WatchView> makeLinesView(Console& console, bool quiet, NumberBase base) {
    return std::make_unique<LinesView>(console, quiet, base);
}

std::unique_ptr<WatchView> makeJsonView(Console& console, NumberBase base) {
    return std::make_unique<JsonView>(console, base);
}

std::unique_ptr<WatchView> makeCsvView(Console& console, NumberBase base) {
    return std::make_unique<CsvView>(console, base);
}
