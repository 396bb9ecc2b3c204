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
    Fine,     ///< nobody holds it, there is no reason to doubt the holder yet, or nobody can tell
    Gone,     ///< it died with the lock
    Doubtful  ///< it does not get on, and may be alive
};

/// Watches the request lock of one message segment for a holder that will never free it.
///
/// Everything in the segment but the request lock belongs to the host and to the lock's one holder,
/// who needs no more than moments for each of its steps. So a lock that stays held while the host
/// owes nothing means that the holder does not run, and the question is only whether it ever will
/// again.
///
/// That a process runs does not by itself show that it is not the holder: a living one may be
/// waiting for a word, or one holder may follow another unseen. The proof is this:
/// - no word keeps a living holder where it is: there is no command that the host has not taken,
/// and
///   nobody waits for a reply that has not been announced;
/// - the pending flag is marked, so that nobody can send a request unseen;
/// - then three windows pass in a row in which no word changes, and in each of them every thread
///   that maps the segment at both ends sleeps all the time, which no step of an exchange does, or
///   goes to sleep often enough to have waited for something in vain.
///
/// A living holder can wait in vain in one window only, since what it waits for comes. Two holders
/// are all that can follow each other without a request. `tests/model` holds this proof, and that
/// none of its parts can be left out.
///
/// Belongs to the thread that answers on the segment, and is asked only while that thread holds
/// neither the mutex nor an enter lock.
class CHolderWatch {
public:
    /// Writes nothing but the mark.
    CHolderWatch(int nDescriptor, MessageRecord* pRecord) noexcept
        : m_nDescriptor(nDescriptor), m_pRecord(pRecord) {}

    /// To be called when the host gets on: has got the mutex, has taken or given a command.
    void NoteProgress() noexcept { m_fStalled = false; }

    /// Whether the lock has been held without progress long enough to look who is there.
    bool IsSuspicious() noexcept;

    /// Looks who is there; meant to be called again and again while it is suspicious. An answer
    /// takes some looks with time between them, and is `Fine` until then.
    Holder Judge() noexcept;

private:
    using Clock = std::chrono::steady_clock;
    // The lock words, conditions and flags, everything before the layout.
    using Words = std::array<std::uint32_t,
                             offsetof(MessageRecord, nRequestCapacity) / sizeof(std::uint32_t)>;

    using Threads = std::vector<MappingThread>;

    Holder BeginProof();
    Holder EndWindow();
    void GiveUp() noexcept { m_nWindow = 0; }
    Words ReadWords() const noexcept;

    const int m_nDescriptor;
    MessageRecord* const m_pRecord;
    bool m_fStalled = false;
    Clock::time_point m_stalledSince;
    Clock::time_point m_lookedAt;
    int m_nWindow = 0;  ///< which one of the proof is open, from 1 on; 0: none
    Words m_words{};    ///< how they stand during the proof
    Threads m_threads;  ///< as the open window began
};
