#ifndef TESTS_UNIT_EIP_RECORD_FAILING_LINK_H
#define TESTS_UNIT_EIP_RECORD_FAILING_LINK_H

/// While one lives, link() fails with that error, as on a file system without hard links (EPERM).
/// The linker puts it in (--wrap).
class FailingLink {
 public:
    explicit FailingLink(int error);
    ~FailingLink();
    FailingLink(const FailingLink&) = delete;
    FailingLink& operator=(const FailingLink&) = delete;
};

#endif
