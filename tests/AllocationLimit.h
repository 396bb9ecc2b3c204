#pragma once

#include <cstddef>

/// While it lives, every allocation of this thread of `nBytes` or more fails with `std::bad_alloc`.
/// The program must link AllocationLimit.cpp.
class CAllocationLimit {
public:
    explicit CAllocationLimit(std::size_t nBytes);
    ~CAllocationLimit();
    CAllocationLimit(CAllocationLimit const&) = delete;
    CAllocationLimit& operator=(CAllocationLimit const&) = delete;
};
