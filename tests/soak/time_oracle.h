#ifndef TESTS_SOAK_TIME_ORACLE_H
#define TESTS_SOAK_TIME_ORACLE_H

#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

// A simulated controller whose values count milliseconds tells with each of them whose it is and
// when it was current. A UDINT is
//
//     controller << 31 | tag << 23 | milliseconds since the controller was started

const int kClockTags = 256;

/// The name of a tag that counts.
QString clockTag(int tag);

/// The simulator's options for the first `count` of them; `controller` is 0 or 1.
QStringList clockOptions(int controller, int count);

/// Milliseconds of the monotonic clock.
int64_t nowMs();

/// Judges the values that a host is given. A value must be the tag's own, of the controller that
/// the driver is pointed at, not older than what the host has seen of that tag, and current at some
/// time of the call; that of a polled tag may be older by what a pass and a lost request take.
///
/// After a restart a polled value of the life before may still be shown until the first one of the
/// new life is.
class TimeOracle {
 public:
    TimeOracle();

    /// The driver talks to this controller from now on. Its values began to count when the clock
    /// showed `epochMs`. Nothing of an earlier life may be shown any more, unless it `mayLinger`.
    void begin(int controller, int64_t epochMs, bool mayLinger);
    /// A value of the present life was seen, in any way.
    void sawPresent() { lingers = false; }
    bool previousLingers() const { return lingers; }

    /// A value that was asked for at `fromMs` and given at `untilMs`. Empty when it is right, else
    /// what is wrong.
    QString check(int tag, bool isPolled, uint32_t value, int64_t fromMs, int64_t untilMs);

    /// When the last value that was right was current.
    int64_t lastMs() const { return last; }
    /// Polled values may be older by so much: a machine with other work makes every pass longer.
    void allowPolled(int64_t ms) { slowerMs = ms; }
    /// How old the oldest polled value was, in milliseconds.
    int64_t oldestMs() const { return oldest; }

 private:
    struct Life {
        int controller = 0;
        int64_t epoch = 0;
        int64_t end = 0;  ///< of a life that is over
    };

    Life present;
    Life previous;
    bool lingers = false;
    int64_t last = 0;
    int64_t oldest = 0;
    int64_t slowerMs = 0;
    std::vector<int64_t> seen;  ///< by tag: when the newest value shown was current
};

#endif
