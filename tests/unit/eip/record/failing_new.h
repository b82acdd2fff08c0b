#ifndef TESTS_UNIT_EIP_RECORD_FAILING_NEW_H
#define TESTS_UNIT_EIP_RECORD_FAILING_NEW_H

/// While one lives, operator new has no memory for this thread.
class FailingNew {
 public:
    FailingNew();
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    /// Whether any was asked for.
    bool hasFailed() const;
};

#endif
