#pragma once

#include <cstdint>

/// Where the timeline is, in samples. It follows what the workstation says about its transport, and
/// stands still until it has said something. Belongs to the audio thread.
class CTransportClock {
public:
    /// The workstation says where its transport is and how fast it moves (1: normal, 0: stopped).
    void Set(std::int64_t lPosition, double dSpeed);

    /// The workstation has no transport to tell of: as long as it tells of none, samples are
    /// counted as they pass.
    void CountByItself();

    /// `nFrames` samples have passed.
    void Advance(std::uint32_t nFrames);

    std::int64_t Position() const { return m_lPosition; }
    bool IsRolling() const { return m_fRolling; }

    /// True once after each jump: the position is not the one that follows from what was before,
    /// or the transport has just begun to roll or stopped.
    bool TakeJump();

    /// How many samples the last jump left out; 0 when it went back, or began or ended rolling.
    std::int64_t Gap() const { return m_lGap; }

private:
    std::int64_t m_lPosition = 0;
    std::int64_t m_lGap = 0;
    bool m_fKnown = false;
    bool m_fRolling = false;
    bool m_fJumped = true;
};
