#ifndef APPS_MICRO800_BASE_PROBLEM_H
#define APPS_MICRO800_BASE_PROBLEM_H

#include <QString>

/// Says what is wrong, in one expression: `return fail(problem, text);`. Always false.
inline bool fail(QString* problem, const QString& text) {
    *problem = text;
    return false;
}

#endif
