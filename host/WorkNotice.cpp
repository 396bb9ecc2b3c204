#include "host/WorkNotice.h"

#include <algorithm>

namespace {

constexpr std::chrono::seconds kPeriod{1};

}  // namespace

void CWorkNotice::Begin(char const* pszWhat) noexcept {
    m_pszWhat = pszWhat;
    m_lExpected = 0;
    m_lDone = 0;
    m_Start = {};
}

void CWorkNotice::Advance(std::int64_t lSamples) {
    m_lDone += lSamples;
    Tick();
}

void CWorkNotice::Tick() {
    Clock::time_point const now = Clock::now();
    if (m_Start == Clock::time_point{}) {
        m_Start = now;
        m_Next = now + kPeriod;
    }
    if (now < m_Next || !m_Listener) return;
    m_Next = now + kPeriod;
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(now - m_Start);
    std::string strText = std::string(m_pszWhat) + " is at work: ";
    if (m_lExpected > 0)
        strText += std::to_string(std::min<std::int64_t>(99, m_lDone * 100 / m_lExpected)) + " % ";
    m_Listener(strText + "after " + std::to_string(seconds.count()) + " s");
}
