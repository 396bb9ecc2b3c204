#include "link/WaitPacer.h"

#include <sched.h>

#include <algorithm>

#include "platform/WordWait.h"

void CWaitPacer::Pause(std::uint32_t nExpected, std::int64_t lLimitUs) noexcept {
    if (m_nSpinsLeft > 0) {
        --m_nSpinsLeft;
        RelaxProcessor();
        return;
    }
    if (m_nYieldsLeft > 0) {
        --m_nYieldsLeft;
        sched_yield();
        return;
    }
    const auto nSleepUs = static_cast<int>(std::clamp<std::int64_t>(lLimitUs, 1, m_nSleepUs));
    SleepOnWord(m_pWord, nExpected, nSleepUs);
    m_nSleepUs = std::min(m_nSleepUs + m_nSleepUs / 8, m_nLongestSleepUs);
}
