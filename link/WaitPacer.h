#pragma once

#include <cstdint>

/// Spends the time between two looks at a shared word: first a short spin for an answer that is
/// about to come, then a few yields, then sleeps on the word that grow from 200 microseconds to a
/// limit. One object serves one wait on one thread.
class CWaitPacer {
public:
    /// `nSpinCount` looks are spent spinning; sleeps never exceed `nLongestSleepUs` microseconds.
    CWaitPacer(const std::uint32_t* pWord, int nSpinCount, int nLongestSleepUs) noexcept
        : m_pWord(pWord), m_nSpinsLeft(nSpinCount), m_nLongestSleepUs(nLongestSleepUs) {}

    /// Passes some time while the word still holds `nExpected`, at most `lLimitUs` microseconds
    /// once it sleeps.
    void Pause(std::uint32_t nExpected, std::int64_t lLimitUs) noexcept;

private:
    const std::uint32_t* m_pWord;
    int m_nSpinsLeft;
    int m_nYieldsLeft = 4;
    int m_nSleepUs = 200;
    int m_nLongestSleepUs;
};
