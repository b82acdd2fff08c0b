#ifndef APPS_MICRO800_BASE_NEAR_H
#define APPS_MICRO800_BASE_NEAR_H

#include <QString>
#include <QStringList>

/// How many characters must be put in, taken out, replaced, or swapped with their neighbour to
/// make one text of the other.
int typingDistance(const QString& one, const QString& other);

/// The word that was probably meant: the nearest of `known`, when it is near or begins with `word`.
/// Empty when none is.
QString nearestOf(const QString& word, const QStringList& known);

/// "; did you mean --json?" for the nearest word, with `before` as its prefix; empty without one.
QString suggestionFor(const QString& word, const QStringList& known,
                      const QString& before = QString());

#endif
