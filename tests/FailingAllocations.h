#pragma once

#include <sys/types.h>

/// While it lives, a thread lacks memory at each place of what it tries again and again: the first
/// allocation of the first try fails, the second one of the second try, and so on. A try ends with
/// the allocation that fails. One at a time; the program must link FailingAllocations.cpp.
class CFailingAllocations {
public:
    explicit CFailingAllocations(pid_t nThread);
    ~CFailingAllocations();
    CFailingAllocations(CFailingAllocations const&) = delete;
    CFailingAllocations& operator=(CFailingAllocations const&) = delete;

    /// How many have failed so far.
    int Count() const;
};
