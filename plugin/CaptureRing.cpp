#include "plugin/CaptureRing.h"

#include <algorithm>

CCaptureRing::CCaptureRing(int nChannels, std::size_t nFrames)
    : m_nChannels(nChannels), m_nFrames(nFrames), m_Samples(nFrames * nChannels) {}

std::size_t CCaptureRing::Room() const {
    return m_nFrames - static_cast<std::size_t>(m_lPut.load(std::memory_order_relaxed) -
                                                m_lTaken.load(std::memory_order_acquire));
}

bool CCaptureRing::Begin(std::int64_t lPosition) {
    // The end that belongs to this beginning must find its place too.
    if (m_Marks.Room() < 2) return false;
    CTakeMark mark;
    mark.change = TakeChange::Begin;
    mark.nTake = ++m_nTake;
    mark.lPosition = lPosition;
    mark.lFrame = m_lPut.load(std::memory_order_relaxed);
    return m_Marks.Put(mark);
}

std::uint32_t CCaptureRing::Append(float const* const* channels, std::uint32_t nFrom,
                                   std::uint32_t nFrames) {
    const auto nFit = static_cast<std::uint32_t>(std::min<std::size_t>(nFrames, Room()));
    const std::uint64_t lPut = m_lPut.load(std::memory_order_relaxed);
    for (std::uint32_t nFrame = 0; nFrame < nFit; ++nFrame) {
        float* frame = &m_Samples[(lPut + nFrame) % m_nFrames * m_nChannels];
        for (int nChannel = 0; nChannel < m_nChannels; ++nChannel) {
            frame[nChannel] = channels[nChannel][nFrom + nFrame];
        }
    }
    m_lPut.store(lPut + nFit, std::memory_order_release);
    return nFit;
}

bool CCaptureRing::Gap(std::int64_t lGap) {
    if (m_Marks.Room() < 2) return false;
    CTakeMark mark;
    mark.change = TakeChange::Gap;
    mark.lGap = lGap;
    mark.lFrame = m_lPut.load(std::memory_order_relaxed);
    return m_Marks.Put(mark);
}

void CCaptureRing::End(TakeEnd end) {
    CTakeMark mark;
    mark.change = TakeChange::End;
    mark.end = end;
    mark.lFrame = m_lPut.load(std::memory_order_relaxed);
    m_Marks.Put(mark);
}

std::optional<CTakeMark> CCaptureRing::NextMark() {
    CTakeMark const* mark = m_Marks.Front();
    if (mark == nullptr || mark->lFrame != m_lTaken.load(std::memory_order_relaxed)) {
        return std::nullopt;
    }
    const CTakeMark copy = *mark;
    m_Marks.Drop();
    return copy;
}

std::size_t CCaptureRing::Read(std::vector<float>& interleaved) {
    // The frames first: every mark before one of them is then there to be seen.
    const std::uint64_t lPut = m_lPut.load(std::memory_order_acquire);
    const std::uint64_t lTaken = m_lTaken.load(std::memory_order_relaxed);
    CTakeMark const* mark = m_Marks.Front();
    const std::uint64_t lUpTo = mark == nullptr ? lPut : std::min(lPut, mark->lFrame);
    const std::size_t nFrames =
        std::min(static_cast<std::size_t>(lUpTo - lTaken), interleaved.size() / m_nChannels);
    for (std::size_t nFrame = 0; nFrame < nFrames; ++nFrame) {
        std::copy_n(&m_Samples[(lTaken + nFrame) % m_nFrames * m_nChannels], m_nChannels,
                    &interleaved[nFrame * m_nChannels]);
    }
    m_lTaken.store(lTaken + nFrames, std::memory_order_release);
    return nFrames;
}
