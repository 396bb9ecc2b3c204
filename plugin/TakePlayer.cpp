#include "plugin/TakePlayer.h"

#include <algorithm>

namespace {

constexpr int kFadesPerSecond = 200;

// How much of the file is heard at a frame of it, from 0 to the length of a fade: the fades at its
// two ends.
std::int64_t EdgeLevel(std::int64_t lFrame, std::int64_t lFrames, std::int64_t lFade) {
    return std::min({lFrame + 1, lFrames - lFrame, lFade});
}

}  // namespace

CTakePlayer::CTakePlayer(int nSampleRate) : m_lFade(std::max(1, nSampleRate / kFadesPerSecond)) {}

CTakePlayer::~CTakePlayer() {
    delete m_pPlaying;
    delete m_pGiven.load();
    delete m_pDone.load();
}

void CTakePlayer::Give(std::unique_ptr<CReturnedAudio> audio) {
    if (!audio) audio = std::make_unique<CReturnedAudio>();
    delete m_pGiven.exchange(audio.release(), std::memory_order_acq_rel);
}

void CTakePlayer::Collect() {
    delete m_pDone.exchange(nullptr, std::memory_order_acq_rel);
}

void CTakePlayer::TakeOver() {
    // The one before must have been freed: there is one place for what is done.
    if (m_pDone.load(std::memory_order_acquire) != nullptr) return;
    CReturnedAudio* given = m_pGiven.exchange(nullptr, std::memory_order_acq_rel);
    if (given == nullptr) return;
    m_pDone.store(m_pPlaying, std::memory_order_release);
    m_pPlaying = given;
    m_lLevel = 0;
}

void CTakePlayer::Play(bool fOn, std::int64_t lPosition, float* const* channels, int nChannels,
                       std::uint32_t nFrom, std::uint32_t nFrames) {
    const std::int64_t lFrames = m_pPlaying == nullptr ? 0 : m_pPlaying->lFrames;
    const std::int64_t lFade = std::clamp<std::int64_t>(lFrames / 2, 1, m_lFade);
    for (std::uint32_t nStep = 0; nStep < nFrames; ++nStep) {
        m_lLevel = fOn ? std::min(m_lLevel + 1, m_lFade) : std::max<std::int64_t>(m_lLevel - 1, 0);
        if (m_lLevel == 0 || lFrames == 0) continue;
        const std::int64_t lFrame = lPosition + nStep - m_pPlaying->lPosition;
        if (lFrame < 0 || lFrame >= lFrames) continue;
        const std::int64_t lEdge = EdgeLevel(lFrame, lFrames, lFade);
        const bool fWhole = lEdge == lFade && m_lLevel == m_lFade;
        const float level = std::min(static_cast<float>(lEdge) / static_cast<float>(lFade),
                                     static_cast<float>(m_lLevel) / static_cast<float>(m_lFade));
        for (int nChannel = 0; nChannel < nChannels; ++nChannel) {
            float& sample = channels[nChannel][nFrom + nStep];
            const float returned = m_pPlaying->Channel(nChannel)[lFrame];
            sample = fWhole ? returned : sample + level * (returned - sample);
        }
    }
}
