#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "plugin/SpscQueue.h"

/// Why a take ended.
enum class TakeEnd : std::int32_t {
    Stopped,     ///< as it should: Capture went off, or the transport stopped or jumped
    Overflow,    ///< the disk did not keep up
    DiskFailed,  ///< the file could not be made or written
};

/// What happens to a take between two frames of the ring.
enum class TakeChange : std::int32_t {
    Begin,
    Gap,  ///< the workstation left out some of the timeline
    End,
};

/// A change of a take and where it is.
struct CTakeMark {
    TakeChange change = TakeChange::Begin;
    std::uint32_t nTake = 0;         ///< of a beginning: the take's number, from 1
    std::int64_t lPosition = 0;      ///< of a beginning: where on the timeline, in samples
    std::int64_t lGap = 0;           ///< of a gap: how many samples are left out
    TakeEnd end = TakeEnd::Stopped;  ///< of an end
    std::uint64_t lFrame = 0;        ///< the ring's frame that it stands before
};

/// Carries takes from the audio thread to the disk thread: frames, with marks where takes begin and
/// end, and where the timeline has a gap. Neither side waits for the other, locks or allocates
/// after construction.
class CCaptureRing {
public:
    CCaptureRing(int nChannels, std::size_t nFrames);

    int Channels() const { return m_nChannels; }

    /// \name Audio thread
    /// @{

    /// Begins a take under the next number. False when the disk thread is too far behind to take
    /// another beginning.
    bool Begin(std::int64_t lPosition);

    /// The number of the take that was begun last; 0: none yet.
    std::uint32_t Take() const { return m_nTake; }

    /// Copies frames `nFrom` to `nFrom + nFrames` of each channel. Returns how many fitted.
    std::uint32_t Append(float const* const* channels, std::uint32_t nFrom, std::uint32_t nFrames);

    /// The timeline goes on some samples later. False when the disk thread is too far behind.
    bool Gap(std::int64_t lGap);

    /// Ends the take that was begun. There is always room for it.
    void End(TakeEnd end);

    /// How many frames fit now.
    std::size_t Room() const;
    /// @}

    /// \name Disk thread
    /// @{

    /// The mark that stands before the next frame, if there is one; it is taken out.
    std::optional<CTakeMark> NextMark();

    /// Reads interleaved frames up to the next mark, and at most as many as fit into `interleaved`.
    /// Returns how many it read.
    std::size_t Read(std::vector<float>& interleaved);
    /// @}

private:
    int m_nChannels;
    std::size_t m_nFrames;
    std::vector<float> m_Samples;
    std::uint32_t m_nTake = 0;
    CSpscQueue<CTakeMark, 64> m_Marks;
    alignas(64) std::atomic<std::uint64_t> m_lPut{0};
    alignas(64) std::atomic<std::uint64_t> m_lTaken{0};
};
