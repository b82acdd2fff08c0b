#include "apps/micro800/setpoints/restorer.h"

#include "apps/micro800/setpoints/element_access.h"
#include "apps/micro800/setpoints/element_value.h"

Restorer::Restorer(const QVector<SavedValue>& saved, DriverSession* opened,
                   const StopQuestion& question)
    : values(saved), session(opened), isStopped(question) {}

QString Restorer::addressOf(const Difference& difference) const {
    return values.at(difference.value).address.elementText(difference.element);
}

bool Restorer::compare() {
    for (int i = 0; i < values.size(); ++i) {
        if (isStopped()) {
            return false;
        }
        const SavedValue& value = values.at(i);
        QVector<QByteArray> now;
        QString problem;
        if (!readElements(session, value.address, 0, value.elements.size(), &now, &problem)) {
            unread.append({value.address.text, problem});
            continue;
        }
        const QVector<Difference> differences = differencesOf(value, i, now);
        sameCount += value.elements.size() - differences.size();
        found += differences;
    }
    return true;
}

bool Restorer::write() {
    for (const WriteRun& run : writeRunsOf(values, found)) {
        if (failuresOnEnd >= kMostFailures || isStopped()) {
            return false;
        }
        writeRun(run);
        reached = run.first + run.count;
    }
    return true;
}

void Restorer::writeRun(const WriteRun& run) {
    const Difference& first = found.at(run.first);
    QVector<QByteArray> wanted;
    for (int i = 0; i < run.count; ++i) {
        wanted.append(found.at(run.first + i).wanted);
    }
    QString problem;
    if (!writeElements(session, values.at(first.value).address, first.element, wanted, &problem)) {
        ++failuresOnEnd;
        miss(run, problem);
        return;
    }
    failuresOnEnd = 0;
    readBack(run);
}

void Restorer::readBack(const WriteRun& run) {
    const Difference& first = found.at(run.first);
    const SavedValue& value = values.at(first.value);
    QVector<QByteArray> now;
    QString problem;
    if (!readElements(session, value.address, first.element, run.count, &now, &problem)) {
        miss(run, problem);
        return;
    }
    for (int i = 0; i < run.count; ++i) {
        const Difference& difference = found.at(run.first + i);
        if (now.at(i) == difference.wanted) {
            ++restoredCount;
        } else {
            missed.append(
                {addressOf(difference), QStringLiteral("written %1, reads %2")
                                            .arg(elementText(value.type(), difference.wanted),
                                                 elementText(value.type(), now.at(i)))});
        }
    }
}

void Restorer::miss(const WriteRun& run, const QString& problem) {
    for (int i = 0; i < run.count; ++i) {
        missed.append({addressOf(found.at(run.first + i)), problem});
    }
}

QString Restorer::nextAddress() const {
    return reached < found.size() ? addressOf(found.at(reached)) : QString();
}
