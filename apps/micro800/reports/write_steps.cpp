#include "apps/micro800/reports/write_steps.h"

#include "apps/micro800/base/input.h"
#include "apps/micro800/base/problem.h"
#include "apps/micro800/format/value_format.h"
#include "apps/micro800/options/addresses.h"

namespace {

bool stepFrom(const QString& addressText, const QStringList& values, WriteStep* step,
              QString* problem) {
    if (!parseTagAddress(addressText, &step->address, problem)) {
        return false;
    }
    if (values.isEmpty()) {
        return fail(problem, QStringLiteral("%1: no value given").arg(addressText));
    }
    step->count = values.size();
    if (!commandFor(step->address, step->count, &step->command, problem)) {
        return false;
    }
    for (const QString& value : values) {
        if (!appendValue(*step->address.type, value, &step->bytes, problem)) {
            return fail(problem, addressText + QLatin1String(": ") + *problem);
        }
    }
    // A string's command counts its bytes; for all others the count is right already.
    if (step->address.type->kind == ValueKind::kString) {
        step->command.unitCount = static_cast<quint32>(step->bytes.size());
    }
    return true;
}

bool isString(const QString& addressText) {
    TagAddress address;
    QString ignored;
    return parseTagAddress(addressText, &address, &ignored) &&
           address.type->kind == ValueKind::kString;
}

/// ADDRESS=VALUE or ADDRESS=VALUE,VALUE; the text after = is all of a string. A blank before
/// the = lets one follow it too.
bool assignmentFrom(const QString& text, WriteStep* step, QString* problem) {
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals < 0) {
        return fail(problem,
                    QStringLiteral("%1: not an assignment; write ADDRESS=VALUE, for example "
                                   "DINT0:SETPOINT=42")
                        .arg(text));
    }
    const bool spaced = text.leftRef(equals).endsWith(QLatin1Char(' '));
    const QString addressText = text.left(equals).trimmed();
    const QString value = spaced ? text.mid(equals + 1).trimmed() : text.mid(equals + 1);
    QStringList values(value);
    if (!isString(addressText)) {
        values = value.split(QLatin1Char(','));
        for (QString& one : values) {
            one = one.trimmed();
        }
    }
    return stepFrom(addressText, values, step, problem);
}

}  // namespace

bool areAssignments(const QStringList& words) {
    const QString first = words.value(0);
    return first.contains(QLatin1Char('=')) || first == QLatin1String(kStandardInput) ||
           (first.size() > 1 && first.startsWith(QLatin1Char('@')));
}

bool writeStepsFrom(const QStringList& words, QVector<WriteStep>* steps, QString* problem) {
    if (words.isEmpty()) {
        return fail(problem, QStringLiteral("no address given"));
    }
    if (!areAssignments(words)) {
        WriteStep step;
        const bool ok = stepFrom(words.first(), words.mid(1), &step, problem);
        steps->append(step);
        return ok;
    }
    QVector<ListedWord> listed;
    if (!listedWordsFrom(words, &listed, problem)) {
        return false;
    }
    for (const ListedWord& word : listed) {
        WriteStep step;
        QString why;
        if (!assignmentFrom(word.text, &step, &why)) {
            return fail(problem, word.problemHere(why));
        }
        steps->append(step);
    }
    return !steps->isEmpty() || fail(problem, QStringLiteral("no address given"));
}
