#include "host/HolderWatch.h"

#include <algorithm>
#include <map>
#include <optional>

namespace {

using namespace std::chrono_literals;

// Long for a step of an exchange, short for a user who waits.
constexpr auto kSuspiciousAfter = 200ms;
constexpr auto kFirstLookAfter = 400ms;
constexpr auto kBetweenLooks = 500ms;

// A client that waits for the lock gets the processor hundreds of times in that time, and a few
// times on a machine that is far too busy.
constexpr std::uint64_t kTurnsOfARunningProcess = 3;

using ProcessTurns = std::map<int, std::uint64_t>;

ProcessTurns TurnsByProcess(std::vector<MappingThread> const& threads) {
    ProcessTurns turns;
    for (MappingThread const& thread : threads) turns[thread.nProcess] += thread.lTurns;
    return turns;
}

const MappingThread* FindThread(std::vector<MappingThread> const& threads,
                                MappingThread const& wanted) {
    const auto found =
        std::find_if(threads.begin(), threads.end(), [&](MappingThread const& thread) {
            return thread.nProcess == wanted.nProcess && thread.nThread == wanted.nThread;
        });
    return found == threads.end() ? nullptr : &*found;
}

// Whether a thread may be in the middle of a step, not getting on with it at one of the looks.
bool MayBeStuck(MappingThread const& thread, std::vector<MappingThread> const& before) {
    if (thread.nState == ThreadState::Halted) return true;
    const MappingThread* const pBefore = FindThread(before, thread);
    if (!pBefore) return false;
    if (pBefore->nState == ThreadState::Halted) return true;
    return thread.nState == ThreadState::Running && pBefore->nState == ThreadState::Running &&
           pBefore->lTurns == thread.lTurns;
}

// Whether every process that maps the segment has been running all the time between two looks.
bool AreAllRunning(std::vector<MappingThread> const& before,
                   std::vector<MappingThread> const& after) {
    if (std::any_of(after.begin(), after.end(),
                    [&](MappingThread const& thread) { return MayBeStuck(thread, before); })) {
        return false;
    }
    const ProcessTurns turnsBefore = TurnsByProcess(before);
    const ProcessTurns turnsAfter = TurnsByProcess(after);
    return std::all_of(turnsAfter.begin(), turnsAfter.end(), [&](auto const& process) {
        const auto old = turnsBefore.find(process.first);
        // Who came between the looks found the lock held.
        return old == turnsBefore.end() || process.second >= old->second + kTurnsOfARunningProcess;
    });
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
        m_fLooked = false;
    }
    return Clock::now() - m_stalledSince >= kSuspiciousAfter;
}

Holder CHolderWatch::Judge() {
    const Clock::time_point now = Clock::now();
    if (now - m_stalledSince < kFirstLookAfter) return Holder::Fine;
    if (m_fLooked && now - m_lookedAt < kBetweenLooks) return Holder::Fine;

    const std::optional<std::vector<MappingThread>> threads = ThreadsThatMap(m_nDescriptor);
    if (!threads) return Holder::Halted;
    // Read last: a holder that woke up while the threads were counted has moved them.
    const Words words = ReadWords();
    Holder verdict = Holder::Fine;
    if (m_fLooked) {
        // Somebody is there: a holder that cannot be seen from here might be.
        const bool fSeen =
            !threads->empty() || CExclusiveUse(m_nDescriptor).Others() != OtherUsers::Some;
        verdict = fSeen && AreAllRunning(m_firstLook, *threads) ? Holder::Gone : Holder::Halted;
        if (words != m_firstWords) verdict = Holder::Fine;
    }
    m_firstLook = *threads;
    m_firstWords = words;
    m_fLooked = true;
    m_lookedAt = now;
    return verdict;
}

CHolderWatch::Words CHolderWatch::ReadWords() const noexcept {
    Words words;
    const auto* const pWords = reinterpret_cast<const std::uint32_t*>(m_pRecord);
    for (std::size_t nWord = 0; nWord < words.size(); ++nWord) {
        words[nWord] = __atomic_load_n(pWords + nWord, __ATOMIC_SEQ_CST);
    }
    return words;
}
