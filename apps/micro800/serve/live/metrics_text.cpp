#include "apps/micro800/serve/live/metrics_text.h"

#include "apps/micro800/format/escape.h"

namespace {

/// Builds the text, one metric after the other.
class Metrics {
 public:
    void begin(const char* metric, const char* type, const char* help) {
        name = QByteArray("micro800_") + metric;
        text += "# HELP " + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
    }
    void add(double value) { text += name + ' ' + numberText(value) + '\n'; }
    void add(const char* label, const QString& labelValue, double value) {
        text += name + '{' + label + "=\"" + prometheusText(labelValue).toUtf8() + "\"} " +
                numberText(value) + '\n';
    }
    void single(const char* metric, const char* type, const char* help, double value) {
        begin(metric, type, help);
        add(value);
    }
    QByteArray take() const { return text; }

 private:
    static QByteArray numberText(double value) { return QByteArray::number(value, 'g', 15); }

    QByteArray name;
    QByteArray text;
};

void addReads(const PollFigures& figures, Metrics* metrics) {
    metrics->single("reads_total", "counter", "Reads of the driver that gave a value.",
                    static_cast<double>(figures.goodReads()));
    metrics->begin("read_failures_total", "counter", "Reads that failed, by the kind of text.");
    const QMap<QString, qint64>& failures = figures.failuresByKind();
    for (auto kind = failures.constBegin(); kind != failures.constEnd(); ++kind) {
        metrics->add("kind", kind.key(), static_cast<double>(kind.value()));
    }
    metrics->begin("writes_total", "counter", "Writes, by what came of them.");
    metrics->add("result", QStringLiteral("done"), static_cast<double>(figures.goodWrites()));
    metrics->add("result", QStringLiteral("failed"), static_cast<double>(figures.badWrites()));
}

void addDrivers(const PollFigures& figures, Metrics* metrics) {
    metrics->single("requests_total", "counter", "Requests that were sent to the controller.",
                    static_cast<double>(figures.requests()));
    metrics->single("connected", "gauge", "1 while every driver is connected.",
                    figures.isConnected() ? 1 : 0);
    metrics->begin("pass_seconds", "gauge", "How long the last polling pass took.");
    for (int i = 0; i < figures.driverCount(); ++i) {
        metrics->add("driver", QString::number(i), figures.passMilliseconds(i) / 1000);
    }
}

void addTags(const TagBoard& board, qint64 now, Metrics* metrics) {
    metrics->begin("tags", "gauge", "Tags by state.");
    for (const TagState state :
         {TagState::kWaiting, TagState::kGood, TagState::kStale, TagState::kFailed}) {
        metrics->add("state", QLatin1String(stateName(state)), board.count(state));
    }
    metrics->begin("tag_age_seconds", "gauge", "Time since the last good read of a tag.");
    for (int i = 0; i < board.size(); ++i) {
        const BoardTag& row = board.row(i);
        if (row.readAt >= 0) {
            metrics->add("address", row.address.text, static_cast<double>(now - row.readAt) / 1000);
        }
    }
}

}  // namespace

QByteArray metricsText(const TagBoard& board, const PollFigures& figures,
                       const ServerFigures& server) {
    Metrics metrics;
    addReads(figures, &metrics);
    addDrivers(figures, &metrics);
    addTags(board, server.now, &metrics);
    metrics.single("history_bytes", "gauge", "Memory of the trends.",
                   static_cast<double>(server.historyBytes));
    metrics.single("streams", "gauge", "Pages that follow the events.", server.streams);
    return metrics.take();
}
