#ifndef TESTS_SOAK_TROUBLE_H
#define TESTS_SOAK_TROUBLE_H

#include <QString>

#include "soak/clock_controller.h"

/// What can be wrong with a controller for a while, one kind after the other.
class Trouble {
 public:
    static int kinds();
    /// The kind as the simulator's faults and commands name it.
    static QString name(int kind);

    /// Begins with this kind; false when the simulator does not take it.
    bool begin(int kind, ClockController* controller);
    /// Puts everything right again.
    bool end();

 private:
    int kind = 0;
    ClockController* troubled = nullptr;
};

#endif
