#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "plugin/ReturnedAudio.h"

/// Plays a returned file in place of the input: at its position on the timeline, sample by sample,
/// with a short cross-fade where it begins and ends, where playing is switched on or off, and where
/// the timeline jumps into it.
class CTakePlayer {
public:
    /// The length of a cross-fade is 5 ms at this rate.
    explicit CTakePlayer(int nSampleRate);
    ~CTakePlayer();
    CTakePlayer(CTakePlayer const&) = delete;
    CTakePlayer& operator=(CTakePlayer const&) = delete;

    /// Frames of a whole cross-fade. That of a file shorter than two of them is half the file.
    std::int64_t FadeFrames() const { return m_lFade; }

    /// \name Any thread but the audio thread, one at a time
    /// @{

    /// Gives the audio thread another file to play, or nothing.
    void Give(std::unique_ptr<CReturnedAudio> audio);

    /// Frees a file that the audio thread no longer plays.
    void Collect();
    /// @}

    /// \name Audio thread
    /// @{

    /// Changes to the file that was given last, if there is one.
    void TakeOver();

    /// The timeline does not go on from where it was.
    void Jump() { m_lLevel = 0; }

    /// Mixes the file over frames `nFrom` to `nFrom + nFrames` of the channels, which hold the
    /// input; the first of them is at `lPosition` on the timeline.
    void Play(bool fOn, std::int64_t lPosition, float* const* channels, int nChannels,
              std::uint32_t nFrom, std::uint32_t nFrames);
    /// @}

private:
    std::int64_t m_lFade;
    std::int64_t m_lLevel = 0;  ///< how far it is switched on, 0 to m_lFade
    CReturnedAudio* m_pPlaying = nullptr;
    std::atomic<CReturnedAudio*> m_pGiven{nullptr};
    std::atomic<CReturnedAudio*> m_pDone{nullptr};
};
