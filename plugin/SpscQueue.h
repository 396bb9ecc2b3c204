#pragma once

#include <array>
#include <atomic>
#include <cstddef>

/// A queue of a fixed size between two threads, one that puts in and one that takes out. Neither
/// ever waits, locks or allocates; elements are copied.
template <typename Element, std::size_t nCapacity>
class CSpscQueue {
public:
    /// How many elements fit now. For the thread that puts in.
    std::size_t Room() const {
        return nCapacity -
               (m_nPut.load(std::memory_order_relaxed) - m_nTaken.load(std::memory_order_acquire));
    }

    /// False when the queue is full; nothing is put in then.
    bool Put(Element const& element) {
        if (Room() == 0) return false;
        const std::size_t nPut = m_nPut.load(std::memory_order_relaxed);
        m_Elements[nPut % nCapacity] = element;
        m_nPut.store(nPut + 1, std::memory_order_release);
        return true;
    }

    /// The oldest element, null when there is none. Valid until `Drop`.
    Element const* Front() const {
        const std::size_t nTaken = m_nTaken.load(std::memory_order_relaxed);
        if (nTaken == m_nPut.load(std::memory_order_acquire)) return nullptr;
        return &m_Elements[nTaken % nCapacity];
    }

    /// Drops the oldest element. Only while there is one.
    void Drop() {
        m_nTaken.store(m_nTaken.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }

private:
    std::array<Element, nCapacity> m_Elements{};
    alignas(64) std::atomic<std::size_t> m_nPut{0};
    alignas(64) std::atomic<std::size_t> m_nTaken{0};
};
