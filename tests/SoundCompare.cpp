// Compares two stretches of sound files sample by sample, for the tests with real plug-in hosts.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "SoundFile.h"

namespace {

struct CStretch {
    std::string strFile;
    std::int64_t lFrom = 0;
};

/// `lFrames` frames of a file; all that follow if that is negative.
CSoundFile Read(CStretch const& stretch, std::int64_t lFrames) {
    CSoundFile sound = ReadSoundFile(stretch.strFile);
    const std::int64_t lEnd = lFrames < 0 ? sound.Frames() : stretch.lFrom + lFrames;
    if (stretch.lFrom < 0 || stretch.lFrom > lEnd || lEnd > sound.Frames()) {
        throw std::runtime_error(stretch.strFile + " is too short");
    }
    sound.samples.resize(static_cast<std::size_t>(lEnd * sound.nChannels));
    sound.samples.erase(sound.samples.begin(),
                        sound.samples.begin() + stretch.lFrom * sound.nChannels);
    return sound;
}

/// Four seconds of noise in 32-bit floats, the same each time for the same seed.
void WriteNoise(std::string const& strFile, int nChannels, std::uint32_t nNoise) {
    CSoundFile sound{nChannels, 48000, {}};
    sound.samples.resize(static_cast<std::size_t>(4 * sound.nSampleRate * nChannels));
    for (float& sample : sound.samples) {
        nNoise = nNoise * 1664525 + 1013904223;
        sample = static_cast<float>(static_cast<std::int32_t>(nNoise)) / 4e9F;
    }
    WriteSoundFile(strFile, sound);
}

// Where a stretch begins in a recording whose beginning nobody knows; throws when it is not there.
std::int64_t Find(CSoundFile const& where, CSoundFile const& what) {
    const auto found = std::search(where.samples.begin(), where.samples.end(), what.samples.begin(),
                                   what.samples.end());
    if (what.samples.empty() || found == where.samples.end()) {
        throw std::runtime_error("the stretch is not in it");
    }
    return (found - where.samples.begin()) / where.nChannels;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Compares two stretches of sound; status 1 and a line when they differ.");
    CStretch first;
    CStretch second;
    std::int64_t lFrames = -1;
    int nNoise = 0;
    std::uint32_t nSeed = 1;
    bool fFind = false;
    app.add_option("first", first.strFile)->required();
    app.add_option("second", second.strFile);
    app.add_option("--first-from", first.lFrom, "where it begins in the first file");
    app.add_option("--second-from", second.lFrom, "where it begins in the second file");
    app.add_option("--frames", lFrames, "how long it is; both to their ends without it");
    app.add_option("--noise", nNoise, "write noise with that many channels into the first file");
    app.add_option("--seed", nSeed, "of the noise: another one is another noise");
    app.add_flag("--find", fFind, "print where the second's stretch begins in the whole first");
    CLI11_PARSE(app, argc, argv);
    try {
        if (nNoise > 0) {
            WriteNoise(first.strFile, nNoise, nSeed);
            return 0;
        }
        if (fFind) {
            const std::int64_t lFound = Find(Read(first, -1), Read(second, lFrames));
            std::printf("%lld\n", static_cast<long long>(first.lFrom + lFound));
            return 0;
        }
        const CSoundFile firstSound = Read(first, lFrames);
        const CSoundFile secondSound = Read(second, lFrames);
        std::vector<float> const& a = firstSound.samples;
        std::vector<float> const& b = secondSound.samples;
        if (firstSound.nChannels != secondSound.nChannels || a.size() != b.size() || a.empty()) {
            std::printf("different lengths: %zu and %zu samples\n", a.size(), b.size());
            return 1;
        }
        for (std::size_t nSample = 0; nSample < a.size(); ++nSample) {
            if (a[nSample] == b[nSample]) continue;
            std::printf("different from sample %zu on: %.9g and %.9g\n", nSample, a[nSample],
                        b[nSample]);
            return 1;
        }
        std::printf("%zu samples are equal\n", a.size());
        return 0;
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "sound-compare: %s\n", failure.what());
        return 1;
    }
}
