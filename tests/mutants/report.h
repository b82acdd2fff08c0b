#ifndef TESTS_MUTANTS_REPORT_H
#define TESTS_MUTANTS_REPORT_H

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include "mutants/trial.h"

/// Why nothing notices a change and nothing has to: `id reason`, one per line, # begins a comment.
typedef QHash<QByteArray, QString> Explanations;
Explanations readExplanations(const QString& path);

/// One line for a person: what was changed, where, and what came of it.
QString lineFor(const Result& result, const Explanations& explanations);

/// A row for each folder and one for all: how many were made, noticed, explained, and neither.
QString tableOf(const QList<Result>& results, const Explanations& explanations);

/// All results, with everything that a row of the table says.
QByteArray jsonOf(const QList<Result>& results, const Explanations& explanations, quint64 seed);

/// Whether at least 95 of 100 of those that compile are noticed or explained.
bool isEnough(const QList<Result>& results, const Explanations& explanations);

#endif
