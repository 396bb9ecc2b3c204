#include "link/WaitPacer.h"

#include <algorithm>

#include "platform/WordWait.h"

namespace {

constexpr std::uint32_t kLooksPerClockReading = 16;

}  // namespace

CWaitPacer::CWaitPacer(const std::uint32_t* pWord, int nSpinUs, int nFirstSleepUs,
                       int nLongestSleepUs, CSpinHabit& habit) noexcept
    : m_pWord(pWord),
      m_habit(habit),
      m_fSpinning(nSpinUs > 0 && habit.ShouldSpin()),
      m_spin(std::chrono::microseconds(nSpinUs)),
      m_nSleepUs(nFirstSleepUs),
      m_nLongestSleepUs(nLongestSleepUs) {}

CWaitPacer::~CWaitPacer() {
    if (m_fSpinning) m_habit.HasPaid();
}

void CWaitPacer::Pause(std::uint32_t nExpected, std::int64_t lLimitUs) noexcept {
    if (m_fSpinning && !IsSpinOver()) {
        RelaxProcessor();
        return;
    }
    const auto nSleepUs = static_cast<int>(std::clamp<std::int64_t>(lLimitUs, 1, m_nSleepUs));
    SleepOnWord(m_pWord, nExpected, nSleepUs);
    m_nSleepUs = std::min(m_nSleepUs + m_nSleepUs / 4, m_nLongestSleepUs);
}

// The clock is read now and then, the first time when the answer was not there at the first looks.
bool CWaitPacer::IsSpinOver() noexcept {
    if (++m_nLooks % kLooksPerClockReading != 0) return false;
    const Clock::time_point now = Clock::now();
    if (m_spinEnd == Clock::time_point()) m_spinEnd = now + m_spin;
    if (now < m_spinEnd) return false;
    m_fSpinning = false;
    m_habit.WasInVain();
    return true;
}
