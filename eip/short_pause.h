#ifndef EIP_SHORT_PAUSE_H
#define EIP_SHORT_PAUSE_H

#include <algorithm>

/// How long to ask for, so that a pause of a few milliseconds takes its time and not much more. The
/// system ends a wait some microseconds late, and tens of them on a processor that has fallen
/// asleep; in a pause of one millisecond that counts. So it is asked for less, by what it was
/// late before. A wait that ends too early has to be followed by another one for the rest.
///
/// All times in microseconds. One thread.
class ShortPause {
 public:
    /// Longer ones are asked for as they are.
    static constexpr unsigned long kLongest = 5000;
    /// More lateness than that is the work of other programs, and comes and goes.
    static constexpr long kMostLate = 100;

    ShortPause() : usual(0) {}

    /// What to ask for when a pause is to take `pause`.
    long toAskFor(long pause) const { return pause - usual; }

    /// Notes that a wait for `asked` took `took`. A longer lateness is believed little by little,
    /// a shorter one at once.
    void note(long asked, long took) {
        const long late = std::min<long>(std::max(took - asked, 0L), kMostLate);
        usual = late < usual ? std::max(late - kMargin, 0L) : usual + (late - usual) / kInertia;
    }

 private:
    static constexpr long kMargin = 3;
    static constexpr long kInertia = 8;

    long usual;  ///< what a wait is late, or less
};

#endif
