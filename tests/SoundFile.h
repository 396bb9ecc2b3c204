#pragma once

#include <sndfile.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

/// A whole sound file in memory.
struct CSoundFile {
    int nChannels = 1;
    int nSampleRate = 48000;
    std::vector<float> samples;  ///< interleaved

    std::int64_t Frames() const { return static_cast<std::int64_t>(samples.size()) / nChannels; }
};

inline CSoundFile ReadSoundFile(std::string const& strFile) {
    SF_INFO info{};
    SNDFILE* file = sf_open(strFile.c_str(), SFM_READ, &info);
    if (file == nullptr) throw std::runtime_error("cannot read " + strFile);
    CSoundFile sound{info.channels, info.samplerate, {}};
    sound.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
    sf_readf_float(file, sound.samples.data(), info.frames);
    sf_close(file);
    return sound;
}

/// Writes a WAV file, of 32-bit floats unless `nEncoding` is another of libsndfile's.
inline void WriteSoundFile(std::string const& strFile, CSoundFile const& sound,
                           int nEncoding = SF_FORMAT_FLOAT) {
    SF_INFO info{};
    info.channels = sound.nChannels;
    info.samplerate = sound.nSampleRate;
    info.format = SF_FORMAT_WAV | nEncoding;
    SNDFILE* file = sf_open(strFile.c_str(), SFM_WRITE, &info);
    if (file == nullptr) throw std::runtime_error("cannot write " + strFile);
    sf_write_float(file, sound.samples.data(), static_cast<sf_count_t>(sound.samples.size()));
    sf_close(file);
}
