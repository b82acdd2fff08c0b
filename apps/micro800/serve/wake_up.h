#ifndef APPS_MICRO800_SERVE_WAKE_UP_H
#define APPS_MICRO800_SERVE_WAKE_UP_H

#include <sys/eventfd.h>
#include <unistd.h>

/// A descriptor that becomes readable when any thread asks for it. Owns it.
class WakeUp {
 public:
    WakeUp() : descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~WakeUp() {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    int readable() const { return descriptor; }
    /// Any thread.
    void ask() { (void)!eventfd_write(descriptor, 1); }
    /// Whether anybody has asked since the last call.
    bool take() {
        eventfd_t ignored = 0;
        return eventfd_read(descriptor, &ignored) == 0;
    }

 private:
    const int descriptor;
};

#endif
