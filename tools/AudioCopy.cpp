#include "tools/AudioCopy.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <memory>
#include <vector>

#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"

namespace {

using CSound = std::unique_ptr<SNDFILE, decltype(&sf_close)>;

constexpr sf_count_t kBlockFrames = 16384;

struct CFormat {
    const char* szEnding;
    int nFormat;
};

// Whatever holds all that the host writes, 32-bit floats; the others hold what they can.
constexpr CFormat kFormats[] = {{".wav", SF_FORMAT_RF64 | SF_FORMAT_FLOAT},
                                {".flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24},
                                {".ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS}};

CFormat const& FormatOf(std::string const& strTarget) {
    std::string strEnding = std::filesystem::path(strTarget).extension().string();
    for (char& c : strEnding) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (CFormat const& format : kFormats)
        if (strEnding == format.szEnding) return format;
    throw CToolFailure(exitTrouble, "no sound file is called " + Quoted(strTarget),
                       "End the name in .wav, .flac or .ogg.", "usage");
}

[[noreturn]] void Fail(std::string const& strWhat, std::string const& strFile, SNDFILE* pSound,
                       const char* szCode) {
    throw CToolFailure(exitTrouble,
                       "cannot " + strWhat + " " + Quoted(strFile) + ": " + sf_strerror(pSound), "",
                       szCode);
}

void CopySamples(SNDFILE* pSource, std::string const& strSource, SNDFILE* pTarget,
                 std::string const& strTarget, SF_INFO const& info) {
    std::vector<float> block(static_cast<std::size_t>(kBlockFrames * info.channels));
    for (sf_count_t nDone = 0; nDone < info.frames;) {
        const sf_count_t nWanted = std::min(kBlockFrames, info.frames - nDone);
        if (sf_readf_float(pSource, block.data(), nWanted) != nWanted)
            Fail("read", strSource, pSource, "unreadable");
        if (sf_writef_float(pTarget, block.data(), nWanted) != nWanted)
            Fail("write", strTarget, pTarget, "unwritable");
        nDone += nWanted;
    }
}

}  // namespace

void RequireAudioTarget(std::string const& strTarget) {
    if (strTarget != "-") FormatOf(strTarget);
}

void CopyAudio(std::string const& strSource, std::string const& strTarget) {
    if (strTarget == "-") return WriteOutput("-", ReadInput(strSource), Replace::No);
    SF_INFO info{};
    const CSound source(sf_open(strSource.c_str(), SFM_READ, &info), &sf_close);
    if (!source) Fail("read", strSource, nullptr, "unreadable");
    CNewFile file(strTarget);
    SF_INFO made{};
    made.samplerate = info.samplerate;
    made.channels = info.channels;
    made.format = FormatOf(strTarget).nFormat;
    CSound target(sf_open_fd(file.Descriptor(), SFM_WRITE, &made, SF_FALSE), &sf_close);
    if (!target) Fail("write", strTarget, nullptr, "unwritable");
    sf_command(target.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // A WAV file unless it is too long for one; nothing to the others.
    sf_command(target.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    CopySamples(source.get(), strSource, target.get(), strTarget, info);
    if (sf_close(target.release()) != 0) Fail("write", strTarget, nullptr, "unwritable");
    file.Keep();
}
