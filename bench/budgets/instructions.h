#ifndef BENCH_BUDGETS_INSTRUCTIONS_H
#define BENCH_BUDGETS_INSTRUCTIONS_H

#include <QString>
#include <array>

#include "bench/budgets/accesses.h"

/// Instructions outside the kernel of all accesses of one kind together.
typedef std::array<double, kAccesses> Instructions;

/// Runs the probe under callgrind. `output` gets what the probe printed, `problem` stays empty when
/// all went well.
Instructions countInstructions(const QString& probe, quint16 port, QByteArray* output,
                               QString* problem);

#endif
