#ifndef EIP_SHORT_PAUSE_H
#define EIP_SHORT_PAUSE_H

#include <algorithm>

/// Makes pauses of a few milliseconds take their time on average. The system ends a wait some
/// microseconds late, and tens of them on a processor that has fallen asleep; in a pause of one
/// millisecond that counts. So what one pause took too long, the next one takes less.
///
/// All times in microseconds. One thread.
class ShortPause {
 public:
    /// Longer ones are asked for as they are.
    static constexpr unsigned long kLongest = 5000;
    /// A pause is never shorter by more than that. More lateness is the work of other programs,
    /// and is not made up for.
    static constexpr long kMostShorter = 100;

    ShortPause() : tooLong(0) {}

    /// What to ask for when a pause is to take `pause`.
    long toAskFor(long pause) const { return pause - tooLong; }

    /// Notes that a wait that was to be a pause of `pause` took `took`.
    void note(long pause, long took) {
        tooLong = std::min<long>(std::max(tooLong + took - pause, 0L), kMostShorter);
    }

 private:
    long tooLong;  ///< what the pauses so far took longer than they should
};

#endif
