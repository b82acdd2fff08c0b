#ifndef TESTS_INTEGRATION_HOSTILE_VARIANTS_H
#define TESTS_INTEGRATION_HOSTILE_VARIANTS_H

#include <QByteArray>
#include <QList>

#include "integration/hostile/exchange.h"

/// A reply as a hostile or broken controller has it.
struct Variant {
    QByteArray name;  ///< says what was done to the good one
    QByteArray bytes;
    QList<Echo> echoes;
    bool hangsUp;  ///< the controller ends the connection after it
};

/// What can become of the good reply of an exchange, each once: cut after every byte, every field
/// that says how much at its limits, statuses with words, more and less data, and what belongs to
/// other exchanges. The first one is the good reply itself.
QList<Variant> variantsOf(const Exchange& exchange);

#endif
