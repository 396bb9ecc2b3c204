#include "plugin/TransportClock.h"

#include <utility>

void CTransportClock::Set(std::int64_t lPosition, double dSpeed) {
    const bool fRolling = dSpeed > 0;
    if (lPosition != m_lPosition || fRolling != m_fRolling) {
        m_fJumped = true;
        const bool fWent = fRolling && m_fRolling && lPosition > m_lPosition;
        m_lGap = fWent ? lPosition - m_lPosition : 0;
    }
    m_lPosition = lPosition;
    m_fRolling = fRolling;
    m_fKnown = true;
}

void CTransportClock::CountByItself() {
    if (!m_fKnown) m_fRolling = true;
}

void CTransportClock::Advance(std::uint32_t nFrames) {
    if (m_fRolling) m_lPosition += nFrames;
}

bool CTransportClock::TakeJump() {
    return std::exchange(m_fJumped, false);
}
