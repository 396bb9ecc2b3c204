#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// A file that came back from the host, in memory, at its place on the timeline.
struct CReturnedAudio {
    std::string strFile;
    std::int64_t lPosition = 0;  ///< of its first sample on the timeline, in samples
    std::int64_t lFrames = 0;
    std::vector<std::vector<float>> channels;

    /// The samples for the plug-in's channel; a file with one channel serves all.
    float const* Channel(int nChannel) const {
        return channels[channels.size() == 1 ? 0 : static_cast<std::size_t>(nChannel)].data();
    }
};

/// Reads a file for a plug-in of so many channels at this rate. Throws `std::runtime_error` with a
/// sentence for the user when the file cannot be read, when its rate is another one, when it has
/// neither one channel nor as many as the plug-in, or when it exceeds `kMostReturnedBytes`. Not for
/// the audio thread.
std::unique_ptr<CReturnedAudio> LoadReturnedAudio(std::string const& strFile,
                                                  std::int64_t lPosition, int nChannels,
                                                  int nSampleRate);

/// The most memory that a returned file may take.
inline constexpr std::uint64_t kMostReturnedBytes = std::uint64_t{2} << 30;
