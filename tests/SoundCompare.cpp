// Compares two stretches of sound files sample by sample, for the tests with real plug-in hosts.

#include <sndfile.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct CStretch {
    std::string strFile;
    std::int64_t lFrom = 0;
};

/// Up to `lFrames` frames of a file, interleaved; `*nChannels` becomes how many it has.
std::vector<float> Read(CStretch const& stretch, std::int64_t lFrames, int* nChannels) {
    SF_INFO info{};
    SNDFILE* file = sf_open(stretch.strFile.c_str(), SFM_READ, &info);
    if (file == nullptr) throw std::runtime_error("cannot read " + stretch.strFile);
    *nChannels = info.channels;
    if (lFrames < 0) lFrames = info.frames - stretch.lFrom;
    std::vector<float> samples(static_cast<std::size_t>(lFrames * info.channels));
    sf_seek(file, stretch.lFrom, SEEK_SET);
    const sf_count_t lRead = sf_readf_float(file, samples.data(), lFrames);
    sf_close(file);
    if (lRead != lFrames) throw std::runtime_error(stretch.strFile + " is too short");
    return samples;
}

/// Four seconds of noise in 32-bit floats, the same each time.
void WriteNoise(std::string const& strFile, int nChannels) {
    SF_INFO info{};
    info.channels = nChannels;
    info.samplerate = 48000;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    std::vector<float> samples(static_cast<std::size_t>(4 * info.samplerate * nChannels));
    std::uint32_t nNoise = 1;
    for (float& sample : samples) {
        nNoise = nNoise * 1664525 + 1013904223;
        sample = static_cast<float>(static_cast<std::int32_t>(nNoise)) / 4e9F;
    }
    SNDFILE* file = sf_open(strFile.c_str(), SFM_WRITE, &info);
    if (file == nullptr) throw std::runtime_error("cannot write " + strFile);
    sf_write_float(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Compares two stretches of sound; status 1 and a line when they differ.");
    CStretch first;
    CStretch second;
    std::int64_t lFrames = -1;
    int nNoise = 0;
    app.add_option("first", first.strFile)->required();
    app.add_option("second", second.strFile);
    app.add_option("--first-from", first.lFrom, "where it begins in the first file");
    app.add_option("--second-from", second.lFrom, "where it begins in the second file");
    app.add_option("--frames", lFrames, "how long it is; both to their ends without it");
    app.add_option("--noise", nNoise, "write noise with that many channels into the first file");
    CLI11_PARSE(app, argc, argv);
    try {
        if (nNoise > 0) {
            WriteNoise(first.strFile, nNoise);
            return 0;
        }
        int nFirst = 0;
        int nSecond = 0;
        const std::vector<float> a = Read(first, lFrames, &nFirst);
        const std::vector<float> b = Read(second, lFrames, &nSecond);
        if (nFirst != nSecond || a.size() != b.size() || a.empty()) {
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
