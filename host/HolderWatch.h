#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "link/SharedSegments.h"
#include "platform/SharedMemory.h"

/// What is known of the client that holds a message segment's request lock.
enum class Holder {
    Fine,    ///< nobody holds it, or there is no reason to doubt the holder yet
    Gone,    ///< it died with the lock
    Halted,  ///< it may be alive, but does not run
};

/// Watches the request lock of one message segment for a holder that will never free it.
///
/// Everything in the segment but the request lock belongs to the host and to the lock's one holder,
/// who needs no more than moments for each of its steps. So a lock that stays held while the host
/// has nothing to do means that the holder does not run, and the question is only whether it ever
/// will again. A client maps the segment for no longer than its exchange: if the only processes
/// that map it are demonstrably running, in vain, then none of them is the holder, and the holder
/// is dead. Who was halted at one look and runs at the next has just woken up and may be the
/// holder; and as long as the words change, somebody gets on.
///
/// Belongs to the thread that answers on the segment.
class CHolderWatch {
public:
    CHolderWatch(int nDescriptor, const MessageRecord* pRecord) noexcept
        : m_nDescriptor(nDescriptor), m_pRecord(pRecord) {}

    /// To be called when an exchange gets on.
    void NoteProgress() noexcept { m_fStalled = false; }

    /// Whether the lock has been held without progress long enough to look who is there.
    bool IsSuspicious() noexcept;

    /// Looks who is there; meant to be called again and again while it is suspicious. The answer
    /// takes two looks that are some time apart, and is `Fine` until then.
    Holder Judge();

private:
    using Clock = std::chrono::steady_clock;
    // The lock words, conditions and flags, everything before the layout.
    using Words = std::array<std::uint32_t,
                             offsetof(MessageRecord, nRequestCapacity) / sizeof(std::uint32_t)>;

    Words ReadWords() const noexcept;

    const int m_nDescriptor;
    const MessageRecord* const m_pRecord;
    bool m_fStalled = false;
    Clock::time_point m_stalledSince;
    bool m_fLooked = false;
    Clock::time_point m_lookedAt;
    std::vector<MappingThread> m_firstLook;
    Words m_firstWords{};
};
