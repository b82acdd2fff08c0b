#ifndef TESTS_UNIT_EIP_CIP_FAILING_CALLOC_H
#define TESTS_UNIT_EIP_CIP_FAILING_CALLOC_H

/// While one lives, one call of calloc() in this thread gets no memory (errno ENOMEM): the one
/// after `before` others. The client library gets all its memory there. The linker puts it in
/// (--wrap), so that it is the same under the sanitizers.
class FailingCalloc {
 public:
    explicit FailingCalloc(int before);
    ~FailingCalloc();
    FailingCalloc(const FailingCalloc&) = delete;
    FailingCalloc& operator=(const FailingCalloc&) = delete;

    /// Whether that call has come.
    bool hasFailed() const;
};

#endif
