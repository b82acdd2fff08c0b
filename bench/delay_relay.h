#ifndef BENCH_DELAY_RELAY_H
#define BENCH_DELAY_RELAY_H

#include <sys/types.h>
#include <QtGlobal>

/// A way to a simulator on which every reply takes some time more, to the microsecond. A process of
/// its own, so that its processor time is nobody else's; it ends with the object.
class DelayRelay {
 public:
    /// Listens on a port of loopback and hands one connection on to `target`. Ends the program when
    /// that is not possible.
    DelayRelay(quint16 target, long delayMicros);
    ~DelayRelay();
    DelayRelay(const DelayRelay&) = delete;
    DelayRelay& operator=(const DelayRelay&) = delete;

    quint16 port() const { return ownPort; }

 private:
    pid_t process;
    quint16 ownPort;
};

#endif
