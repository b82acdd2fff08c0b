#include "unit/eip/record/failing_link.h"

#include <atomic>
#include <cerrno>

namespace {

std::atomic<int> linkError(0);

}  // namespace

extern "C" {
int __real_link(const char* from, const char* to);
int __wrap_link(const char* from, const char* to);
}

int __wrap_link(const char* from, const char* to) {
    const int error = linkError.load();
    if (error == 0) {
        return __real_link(from, to);
    }
    errno = error;
    return -1;
}

FailingLink::FailingLink(int error) {
    linkError.store(error);
}

FailingLink::~FailingLink() {
    linkError.store(0);
}
