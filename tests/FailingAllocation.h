#pragma once

#include <cstddef>

/// Watches the allocations of this thread while it lives, and may let one of them fail.
/// The program must link FailingAllocation.cpp.
class CFailingAllocation {
public:
    /// Lets the allocation of that number, counted from 0, throw `std::bad_alloc`; none if
    /// negative.
    explicit CFailingAllocation(long number = -1);
    ~CFailingAllocation();
    CFailingAllocation(CFailingAllocation const&) = delete;
    CFailingAllocation& operator=(CFailingAllocation const&) = delete;

    /// Whether that allocation was asked for.
    bool HasFailed() const;

    /// How many bytes were asked for in all, and how many times at least `size` at once.
    std::size_t Bytes() const;
    long AtLeast(std::size_t size) const;

    /// Allocations of the whole program that were not freed yet.
    static long Live();
};
