#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "host/AudioFile.h"

/// Sound of any length, of which stretches can be read. Used by one thread.
class CSound {
public:
    virtual ~CSound() = default;

    virtual int SampleRate() const = 0;
    virtual std::size_t Channels() const = 0;
    virtual std::int64_t Frames() const = 0;

    /// All channels of samples [lStart, lStart + lFrames); outside of the sound there is silence.
    /// Reading onwards, block after block, is quickest. Throws `CAudioFileError`.
    virtual CAudio Read(std::int64_t lStart, std::int64_t lFrames) = 0;
};

/// Takes sound that is made, block after block.
using CSoundSink = std::function<void(CAudio const& block)>;

/// Calls `use(block)` for all of a stretch, from its start to its end.
template <typename F>
void ForEachBlock(CSound& sound, std::int64_t lStart, std::int64_t lEnd,
                  CCheckpoint const& checkpoint, F const& use) {
    constexpr std::int64_t kBlock = 1 << 16;
    for (std::int64_t lAt = lStart; lAt < lEnd; lAt += kBlock) {
        if (checkpoint) checkpoint();
        use(sound.Read(lAt, std::min(kBlock, lEnd - lAt)));
    }
}
