#pragma once

#include <chrono>
#include <cstdint>

/// Whether spinning has paid lately for one thread's waits. It does when the other side answers
/// from another core at once; it only stands in the way when that side needs this core, or needs
/// long. After a vain spin the next waits go without, the more of them the more often it was in
/// vain.
class CSpinHabit {
public:
    bool ShouldSpin() noexcept {
        if (m_nWaitsToSkip == 0) return true;
        --m_nWaitsToSkip;
        return false;
    }

    void HasPaid() noexcept { m_nNextSkip = 1; }

    void WasInVain() noexcept {
        m_nWaitsToSkip = m_nNextSkip;
        if (m_nNextSkip < kLongestSkip) m_nNextSkip *= 2;
    }

private:
    static constexpr int kLongestSkip = 16;

    int m_nWaitsToSkip = 0;
    int m_nNextSkip = 1;
};

/// Spends the time between two looks at a shared word: a spin for an answer that is about to come,
/// then sleeps on the word that grow to a limit. One object serves one wait on one thread.
class CWaitPacer {
public:
    /// Spins for `nSpinUs` microseconds, if that is not 0 and the habit is for it; then sleeps for
    /// `nFirstSleepUs` microseconds and longer ones, up to `nLongestSleepUs`. Word and habit
    /// outlive the wait.
    CWaitPacer(const std::uint32_t* pWord, int nSpinUs, int nFirstSleepUs, int nLongestSleepUs,
               CSpinHabit& habit) noexcept;
    /// Tells the habit whether the spin has paid.
    ~CWaitPacer();
    CWaitPacer(CWaitPacer const&) = delete;
    CWaitPacer& operator=(CWaitPacer const&) = delete;

    /// Passes some time while the word still holds `nExpected`, at most `lLimitUs` microseconds
    /// once it sleeps.
    void Pause(std::uint32_t nExpected, std::int64_t lLimitUs) noexcept;

private:
    using Clock = std::chrono::steady_clock;

    bool IsSpinOver() noexcept;

    const std::uint32_t* m_pWord;
    CSpinHabit& m_habit;
    bool m_fSpinning;
    std::uint32_t m_nLooks = 0;
    Clock::duration m_spin;
    Clock::time_point m_spinEnd{};
    int m_nSleepUs;
    int m_nLongestSleepUs;
};
