#include "host/HolderWatch.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <utility>

namespace {

using namespace std::chrono_literals;

// Long for a step of an exchange, short for a user who waits.
constexpr auto kSuspiciousAfter = 200ms;
constexpr auto kFirstLookAfter = 400ms;
constexpr auto kLeastWindow = 150ms;

constexpr int kWindowsOfAProof = 3;

// Another value of the pending flag that means the same to everybody.
constexpr std::uint8_t kPending = 1;
constexpr std::uint8_t kPendingMarked = 2;

// Between two turns lies one whole attempt. A client that waits makes some seventy of them in the
// shortest window; one that is stopped and goes on leaves the processor twice without any.
constexpr std::uint64_t kTurnsInVain = 5;

// What a thread did in a window, from the best to the worst.
enum class Motion {
    Harmless,  ///< asleep all the time, or waited in vain
    Slow,      ///< not enough turns to tell
    Halted     ///< at one end at least
};

const MappingThread* FindThread(std::vector<MappingThread> const& threads,
                                MappingThread const& wanted) noexcept {
    const auto found =
        std::find_if(threads.begin(), threads.end(), [&](MappingThread const& thread) {
            return thread.nProcess == wanted.nProcess && thread.nThread == wanted.nThread;
        });
    return found == threads.end() ? nullptr : &*found;
}

Motion MotionOf(MappingThread const& before, MappingThread const& after) noexcept {
    if (before.nState == ThreadState::Halted || after.nState == ThreadState::Halted) {
        return Motion::Halted;
    }
    const std::uint64_t lTurns = after.lTurns - before.lTurns;
    const bool fAsleep =
        before.nState == ThreadState::Waiting && after.nState == ThreadState::Waiting;
    const bool fHarmless = lTurns >= kTurnsInVain || (fAsleep && lTurns == 0);
    return fHarmless ? Motion::Harmless : Motion::Slow;
}

// Who came in the window found the lock held; who has gone freed nothing, or a word had changed.
Motion WorstMotion(std::vector<MappingThread> const& before,
                   std::vector<MappingThread> const& after) noexcept {
    Motion worst = Motion::Harmless;
    for (MappingThread const& thread : after) {
        const MappingThread* const pBefore = FindThread(before, thread);
        if (pBefore) worst = std::max(worst, MotionOf(*pBefore, thread));
    }
    return worst;
}

// Whether a living holder would stay where it is: before an enter lock that comes free when the
// host takes its command, or among the waiters with no notification under way.
bool IsHolderKept(MessageRecord const& record) noexcept {
    ConditionWords const& reply = record.replyCondition;
    return record.requestCondition.nCommand != kCommandSleep ||
           (reply.nWaiterCount > 0 && reply.nCommand == kCommandSleep && reply.nEnterLock == 0);
}

template <typename Words>
MessageRecord RecordOf(Words const& words) noexcept {
    MessageRecord record{};
    std::memcpy(&record, words.data(), sizeof(words));
    return record;
}

}  // namespace

bool CHolderWatch::IsSuspicious() noexcept {
    if (__atomic_load_n(&m_pRecord->nRequestLock, __ATOMIC_SEQ_CST) == 0) {
        m_fStalled = false;
        return false;
    }
    if (!m_fStalled) {
        m_fStalled = true;
        m_stalledSince = Clock::now();
        GiveUp();
    }
    return Clock::now() - m_stalledSince >= kSuspiciousAfter;
}

Holder CHolderWatch::Judge() noexcept {
    const Clock::time_point now = Clock::now();
    if (now - m_stalledSince < kFirstLookAfter) return Holder::Fine;
    if (m_nWindow > 0 && now - m_lookedAt < kLeastWindow) return Holder::Fine;
    m_lookedAt = now;
    try {
        return m_nWindow == 0 ? BeginProof() : EndWindow();
    } catch (std::exception const&) {
        // There was no memory to look with.
        GiveUp();
        return Holder::Fine;
    }
}

Holder CHolderWatch::BeginProof() {
    std::uint8_t nPending = kPending;
    __atomic_compare_exchange_n(&m_pRecord->fPending, &nPending, kPendingMarked, false,
                                __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    m_words = ReadWords();
    const MessageRecord record = RecordOf(m_words);
    if (record.nRequestLock == 0 || record.fPending == kPending) return Holder::Fine;
    if (IsHolderKept(record)) return Holder::Doubtful;
    auto threads = ThreadsThatMap(m_nDescriptor);
    if (!threads) return Holder::Fine;
    m_threads = std::move(*threads);
    m_nWindow = 1;
    return Holder::Fine;
}

// The words are read after the threads here, and before them when the proof begins, and the threads
// are looked at afresh for the next window: so every turn that a thread is credited with lies
// between two readings of the words.
Holder CHolderWatch::EndWindow() {
    const auto threads = ThreadsThatMap(m_nDescriptor);
    const bool fMoved = ReadWords() != m_words;
    // Somebody may be there who cannot be seen from here.
    const bool fHidden =
        !threads || (threads->empty() && CExclusiveUse(m_nDescriptor).Others() == OtherUsers::Some);
    if (fMoved || fHidden) {
        GiveUp();
        return fMoved ? Holder::Fine : Holder::Doubtful;
    }
    const Motion motion = WorstMotion(m_threads, *threads);
    // A window may last until the slowest thread has had its turns.
    if (motion == Motion::Slow) return Holder::Doubtful;
    if (motion == Motion::Halted) {
        GiveUp();
        return Holder::Doubtful;
    }
    if (m_nWindow == kWindowsOfAProof) return Holder::Gone;
    auto fresh = ThreadsThatMap(m_nDescriptor);
    if (!fresh) {
        GiveUp();
        return Holder::Fine;
    }
    m_threads = std::move(*fresh);
    ++m_nWindow;
    return Holder::Fine;
}

CHolderWatch::Words CHolderWatch::ReadWords() const noexcept {
    Words words;
    const auto* const pWords = reinterpret_cast<const std::uint32_t*>(m_pRecord);
    for (std::size_t nWord = 0; nWord < words.size(); ++nWord) {
        words[nWord] = __atomic_load_n(pWords + nWord, __ATOMIC_SEQ_CST);
    }
    return words;
}
