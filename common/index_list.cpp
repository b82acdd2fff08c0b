#include "common/index_list.h"

#include <QStringList>

bool indexesFit(const QString& indexes) {
    const QStringList parts = indexes.split(QLatin1Char(','));
    for (int i = 0; i < parts.size(); ++i) {
        bool fits = false;
        parts.at(i).toInt(&fits);
        if (!fits) {
            return false;
        }
    }
    return true;
}
