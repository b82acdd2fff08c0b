#include "mutants/report.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

namespace {

const int kPercentEnough = 95;

struct Counts {
    int made = 0;
    int noticed = 0;
    int explained = 0;
    int doNotCompile = 0;

    void add(const Result& result, const Explanations& explanations) {
        if (result.outcome == Outcome::doesNotCompile) {
            ++doNotCompile;
            return;
        }
        ++made;
        noticed += result.outcome == Outcome::noticed ? 1 : 0;
        explained +=
            result.outcome == Outcome::survived && explanations.contains(result.mutation.id()) ? 1
                                                                                               : 0;
    }
    double percent() const { return made == 0 ? 0 : 100.0 * noticed / made; }
    double percentWithExplained() const {
        return made == 0 ? 0 : 100.0 * (noticed + explained) / made;
    }
};

Counts countsOf(const QList<Result>& results, const Explanations& explanations) {
    Counts counts;
    for (const Result& result : results) {
        counts.add(result, explanations);
    }
    return counts;
}

QString row(const QString& name, const Counts& counts) {
    return QString::asprintf("%-32s %5d %8d %10d %9d %8.1f %% %9d\n", qPrintable(name), counts.made,
                             counts.noticed, counts.explained,
                             counts.made - counts.noticed - counts.explained, counts.percent(),
                             counts.doNotCompile);
}

const char* nameOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::noticed:
            return "noticed";
        case Outcome::survived:
            return "survived";
        case Outcome::doesNotCompile:
            break;
    }
    return "does not compile";
}

QString nameOf(const Result& result, const Explanations& explanations) {
    const bool explained =
        result.outcome == Outcome::survived && explanations.contains(result.mutation.id());
    return explained ? QString("explained") : QString(nameOf(result.outcome));
}

}  // namespace

Explanations readExplanations(const QString& path) {
    Explanations explanations;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return explanations;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QByteArray text = line.simplified();
        const int blank = text.indexOf(' ');
        if (!text.startsWith('#') && blank > 0) {
            explanations.insert(text.left(blank), QString::fromUtf8(text.mid(blank + 1)));
        }
    }
    return explanations;
}

QString lineFor(const Result& result, const Explanations& explanations) {
    const Mutation& mutation = result.mutation;
    const QString to = mutation.to.isEmpty() ? QString("nothing") : QString(mutation.to);
    return QString("%1 %2 %3:%4: %5 -> %6 in: %7%8\n")
        .arg(QString(mutation.id()), nameOf(result, explanations).leftJustified(9), mutation.file)
        .arg(mutation.line)
        .arg(QString(mutation.from.simplified()), to.simplified(), QString(mutation.where),
             result.by.isEmpty() ? QString() : "  [" + result.by + "]");
}

QString tableOf(const QList<Result>& results, const Explanations& explanations) {
    QMap<QString, Counts> folders;
    for (const Result& result : results) {
        folders[result.mutation.file.section('/', 0, -2)].add(result, explanations);
    }
    QString table = QString::asprintf("%-32s %5s %8s %10s %9s %10s %9s\n", "folder", "made",
                                      "noticed", "explained", "survived", "noticed", "rejected");
    for (auto folder = folders.constBegin(); folder != folders.constEnd(); ++folder) {
        table += row(folder.key(), folder.value());
    }
    return table + row("all", countsOf(results, explanations));
}

QByteArray jsonOf(const QList<Result>& results, const Explanations& explanations, quint64 seed) {
    QJsonArray mutants;
    for (const Result& result : results) {
        const Mutation& mutation = result.mutation;
        QJsonObject object;
        object["id"] = QString(mutation.id());
        object["file"] = mutation.file;
        object["line"] = mutation.line;
        object["kind"] = QString(mutation.kind);
        object["from"] = QString(mutation.from);
        object["to"] = QString(mutation.to);
        object["where"] = QString(mutation.where);
        object["result"] = nameOf(result, explanations);
        object["by"] = result.by;
        if (explanations.contains(mutation.id())) {
            object["reason"] = explanations.value(mutation.id());
        }
        mutants << object;
    }
    const Counts counts = countsOf(results, explanations);
    QJsonObject all;
    all["seed"] = static_cast<qint64>(seed);
    all["made"] = counts.made;
    all["noticed"] = counts.noticed;
    all["explained"] = counts.explained;
    all["survived"] = counts.made - counts.noticed - counts.explained;
    all["rejected"] = counts.doNotCompile;
    all["mutants"] = mutants;
    return QJsonDocument(all).toJson();
}

bool isEnough(const QList<Result>& results, const Explanations& explanations) {
    return countsOf(results, explanations).percentWithExplained() >= kPercentEnough;
}
