#include "host/ScriptClock.h"

std::int64_t CScriptClock::Now() noexcept {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void CScriptClock::Start(std::chrono::milliseconds limit) noexcept {
    m_nLimit = std::chrono::nanoseconds(limit).count();
    std::int64_t const nNow = Now();
    m_nEnd = nNow + m_nLimit;
    m_nStuckFrom = nNow + 2 * m_nLimit;
}

void CScriptClock::Stop() noexcept {
    m_nEnd = INT64_MAX;
    m_nStuckFrom = INT64_MAX;
}

bool CScriptClock::IsStuck() const noexcept {
    return !m_fPaused && Now() >= m_nStuckFrom;
}

CScriptClock::CPause::CPause(CScriptClock& clock) noexcept : m_Clock(clock) {
    m_Clock.m_fPaused = true;
    m_nStart = Now();
}

CScriptClock::CPause::~CPause() {
    std::int64_t const nEnd = m_Clock.m_nEnd + (Now() - m_nStart);
    m_Clock.m_nStuckFrom = nEnd + m_Clock.m_nLimit;
    m_Clock.m_nEnd = nEnd;
    m_Clock.m_fPaused = false;
}
