#ifndef TESTS_UNIT_EIP_FAILING_MALLOC_H
#define TESTS_UNIT_EIP_FAILING_MALLOC_H

/// While one lives, the next call of malloc() in this thread gets no memory (errno ENOMEM). The
/// transports get the memory of a reply there. The linker puts it in (--wrap), so that it is the
/// same under the sanitizers.
class FailingMalloc {
 public:
    FailingMalloc();
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;

    /// Whether that call has come.
    bool hasFailed() const;
};

#endif
