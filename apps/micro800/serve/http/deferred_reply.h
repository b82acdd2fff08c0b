#ifndef APPS_MICRO800_SERVE_DEFERRED_REPLY_H
#define APPS_MICRO800_SERVE_DEFERRED_REPLY_H

#include <mutex>

#include "apps/micro800/serve/http/http_message.h"

/// An answer that another thread finds: the one that talks to the controller. Any thread.
class DeferredReply {
 public:
    /// Once.
    void set(const HttpReply& found) {
        const std::lock_guard<std::mutex> lock(mutex);
        reply = found;
        ready = true;
    }
    /// False while there is none.
    bool take(HttpReply* found) const {
        const std::lock_guard<std::mutex> lock(mutex);
        if (ready) {
            *found = reply;
        }
        return ready;
    }

 private:
    mutable std::mutex mutex;
    HttpReply reply;  // guarded by mutex, and so is
    bool ready = false;
};

#endif
