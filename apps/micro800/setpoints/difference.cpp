#include "apps/micro800/setpoints/difference.h"

#include "apps/micro800/setpoints/element_access.h"

QVector<Difference> differencesOf(const SavedValue& saved, int value,
                                  const QVector<QByteArray>& now) {
    QVector<Difference> differences;
    for (int i = 0; i < saved.elements.size(); ++i) {
        if (now.at(i) != saved.elements.at(i)) {
            differences.append({value, i, now.at(i), saved.elements.at(i)});
        }
    }
    return differences;
}

QVector<WriteRun> writeRunsOf(const QVector<SavedValue>& values,
                              const QVector<Difference>& differences) {
    QVector<WriteRun> runs;
    for (int i = 0; i < differences.size(); ++i) {
        const Difference& difference = differences.at(i);
        const bool follows = i > 0 && differences.at(i - 1).value == difference.value &&
                             differences.at(i - 1).element + 1 == difference.element;
        const int most = elementsOfOneWrite(values.at(difference.value).type());
        if (follows && runs.last().count < most) {
            ++runs.last().count;
        } else {
            runs.append({i, 1});
        }
    }
    return runs;
}
