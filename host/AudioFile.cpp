#include "host/AudioFile.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

namespace {

constexpr std::int64_t kBlockFrames = 16384;
constexpr int kMaxChannels = 1024;

using CSoundHandle = std::unique_ptr<SNDFILE, decltype(&sf_close)>;

[[noreturn]] void Fail(std::string const& strPath, std::string const& strReason) {
    throw CAudioFileError("the audio file \"" + strPath + "\" " + strReason);
}

[[noreturn]] void FailWithError(std::string const& strPath, char const* pszWhat, int nError) {
    Fail(strPath, std::string(pszWhat) + ": " + std::generic_category().message(nError));
}

CSoundHandle OpenForReading(std::string const& strPath, SF_INFO& info) {
    if (strPath.find('\0') != std::string::npos)
        Fail(strPath.substr(0, strPath.find('\0')), "has a NUL in its name");
    int const nFile = open(strPath.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (nFile < 0) FailWithError(strPath, "cannot be opened", errno);
    struct stat status {};
    if (fstat(nFile, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(nFile);
        Fail(strPath, "is not a regular file");
    }
    SNDFILE* pSound = sf_open_fd(nFile, SFM_READ, &info, SF_TRUE);
    if (!pSound) {
        std::string const strReason = sf_strerror(nullptr);
        Fail(strPath, "is not readable as audio: " + strReason);
    }
    return {pSound, &sf_close};
}

void CheckChannels(std::string const& strPath, std::vector<int> const& channels, int nAvailable) {
    for (int nChannel : channels)
        if (nChannel < 0 || nChannel >= nAvailable)
            Fail(strPath, "has no channel " + std::to_string(nChannel) + ": it has " +
                              std::to_string(nAvailable) + ", counted from 0");
}

/// Bit for bit, so that a sample that is not a number equals itself.
bool SameSamples(CAudio const& left, CAudio const& right) {
    return std::equal(left.m_Channels.begin(), left.m_Channels.end(), right.m_Channels.begin(),
                      right.m_Channels.end(), [](auto const& a, auto const& b) {
                          return a.size() == b.size() &&
                                 std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
                      });
}

}  // namespace

struct CAudioFile::CState {
    std::string m_strPath;
    CSoundHandle m_Sound{nullptr, &sf_close};
    CAudioFileInfo m_Info;
    std::vector<float> m_Interleaved;
    std::int64_t m_lPosition = 0;
};

CAudioFile::CAudioFile(std::string const& strPath) : m_pState(std::make_unique<CState>()) {
    SF_INFO info{};
    m_pState->m_strPath = strPath;
    m_pState->m_Sound = OpenForReading(strPath, info);
    if (info.channels < 1 || info.channels > kMaxChannels || info.samplerate < 1 || info.frames < 0)
        Fail(strPath, "claims an impossible format");
    if (!info.seekable) Fail(strPath, "cannot be read at any place");
    m_pState->m_Info = {info.frames, info.channels, info.samplerate};
}

CAudioFile::~CAudioFile() = default;
CAudioFile::CAudioFile(CAudioFile&&) noexcept = default;
CAudioFile& CAudioFile::operator=(CAudioFile&&) noexcept = default;

CAudioFileInfo const& CAudioFile::Info() const {
    return m_pState->m_Info;
}

void CAudioFile::Require(std::int64_t lFrames) const {
    if (m_pState->m_Info.m_lFrames < lFrames)
        Fail(m_pState->m_strPath, "has become shorter: " + std::to_string(lFrames) +
                                      " samples are needed, it has " +
                                      std::to_string(m_pState->m_Info.m_lFrames));
}

CAudio CAudioFile::Read(std::int64_t lStart, std::int64_t lFrames,
                        std::vector<int> const& channels) {
    CState& state = *m_pState;
    CheckChannels(state.m_strPath, channels, state.m_Info.m_nChannels);
    auto const nLength = static_cast<std::size_t>(std::max<std::int64_t>(lFrames, 0));
    CAudio audio{state.m_Info.m_nSampleRate, {}};
    audio.m_Channels.assign(channels.size(), std::vector<float>(nLength, 0.0f));

    std::int64_t const lFrom = std::clamp<std::int64_t>(lStart, 0, state.m_Info.m_lFrames);
    std::int64_t const lTo =
        std::clamp<std::int64_t>(lStart + lFrames, lFrom, state.m_Info.m_lFrames);
    if (lFrom == lTo) return audio;
    if (state.m_lPosition != lFrom && sf_seek(state.m_Sound.get(), lFrom, SEEK_SET) != lFrom)
        Fail(state.m_strPath, "breaks off before sample " + std::to_string(lFrom));

    auto const nFileChannels = static_cast<std::size_t>(state.m_Info.m_nChannels);
    state.m_Interleaved.resize(static_cast<std::size_t>(kBlockFrames) * nFileChannels);
    for (std::int64_t lAt = lFrom; lAt < lTo;) {
        std::int64_t const lWanted = std::min(kBlockFrames, lTo - lAt);
        std::int64_t const lRead =
            sf_readf_float(state.m_Sound.get(), state.m_Interleaved.data(), lWanted);
        state.m_lPosition = lAt + lRead;
        if (lRead < lWanted)
            Fail(state.m_strPath, "breaks off at sample " + std::to_string(lAt + lRead));
        auto const nOffset = static_cast<std::size_t>(lAt - lStart);
        for (std::size_t n = 0; n < channels.size(); ++n)
            for (std::size_t i = 0; i < static_cast<std::size_t>(lRead); ++i)
                audio.m_Channels[n][nOffset + i] =
                    state.m_Interleaved[i * nFileChannels + static_cast<std::size_t>(channels[n])];
        lAt += lRead;
    }
    return audio;
}

struct CAudioWriter::CState {
    std::string m_strPath;
    std::string m_strTemporary;
    CSoundHandle m_Sound{nullptr, &sf_close};
    int m_nChannels = 0;
    std::vector<float> m_Interleaved;
};

CAudioWriter::CAudioWriter(std::string const& strPath, int nSampleRate, int nChannels,
                           SampleFormat format)
    : m_pState(std::make_unique<CState>()) {
    CState& state = *m_pState;
    state.m_strPath = strPath;
    state.m_strTemporary = strPath + ".part";
    state.m_nChannels = nChannels;
    int const nFile = open(state.m_strTemporary.c_str(),
                           O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (nFile < 0) FailWithError(strPath, "cannot be written", errno);

    SF_INFO info{};
    info.samplerate = nSampleRate;
    info.channels = nChannels;
    info.format =
        SF_FORMAT_RF64 | (format == SampleFormat::Float32 ? SF_FORMAT_FLOAT : SF_FORMAT_PCM_24);
    state.m_Sound.reset(sf_open_fd(nFile, SFM_WRITE, &info, SF_TRUE));
    if (state.m_Sound) {
        sf_command(state.m_Sound.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
        return;
    }
    std::string const strReason = sf_strerror(nullptr);
    std::remove(state.m_strTemporary.c_str());
    Fail(strPath, "cannot be written: " + strReason);
}

CAudioWriter::~CAudioWriter() {
    if (!m_pState->m_Sound) return;
    m_pState->m_Sound.reset();
    std::remove(m_pState->m_strTemporary.c_str());
}

void CAudioWriter::Write(CAudio const& audio) {
    CState& state = *m_pState;
    if (static_cast<int>(audio.m_Channels.size()) != state.m_nChannels)
        Fail(state.m_strPath, "was given a block with another number of channels");
    auto const nChannels = audio.m_Channels.size();
    for (std::int64_t lAt = 0; lAt < audio.Frames(); lAt += kBlockFrames) {
        auto const nFrames = static_cast<std::size_t>(std::min(kBlockFrames, audio.Frames() - lAt));
        state.m_Interleaved.resize(nFrames * nChannels);
        for (std::size_t n = 0; n < nChannels; ++n)
            for (std::size_t i = 0; i < nFrames; ++i)
                state.m_Interleaved[i * nChannels + n] =
                    audio.m_Channels[n][static_cast<std::size_t>(lAt) + i];
        auto const lFrames = static_cast<sf_count_t>(nFrames);
        if (sf_writef_float(state.m_Sound.get(), state.m_Interleaved.data(), lFrames) != lFrames)
            Fail(state.m_strPath,
                 std::string("cannot be written: ") + sf_strerror(state.m_Sound.get()));
    }
}

void CAudioWriter::Finish() {
    CState& state = *m_pState;
    bool const fClosed = sf_close(state.m_Sound.release()) == 0;
    if (fClosed && std::rename(state.m_strTemporary.c_str(), state.m_strPath.c_str()) == 0) return;
    int const nError = errno;
    std::remove(state.m_strTemporary.c_str());
    FailWithError(state.m_strPath, "cannot be written", nError);
}

CAudioFileInfo ProbeAudioFile(std::string const& strPath) {
    return CAudioFile(strPath).Info();
}

void WriteAudioFile(std::string const& strPath, CAudio const& audio, SampleFormat format) {
    CAudioWriter writer(strPath, audio.m_nSampleRate, static_cast<int>(audio.m_Channels.size()),
                        format);
    writer.Write(audio);
    writer.Finish();
}

bool SameAudio(CAudioRange const& left, CAudioRange const& right, CCheckpoint const& checkpoint) {
    std::int64_t const lLength = left.m_lEnd - left.m_lStart;
    if (lLength != right.m_lEnd - right.m_lStart) return false;
    if (left.m_Channels.size() != right.m_Channels.size()) return false;
    bool const fSameFile = left.m_strFile == right.m_strFile && left.m_lStart == right.m_lStart &&
                           left.m_Channels == right.m_Channels;
    CAudioFile leftFile(left.m_strFile);
    CAudioFile rightFile(right.m_strFile);
    if (leftFile.Info().m_nSampleRate != rightFile.Info().m_nSampleRate) return false;
    leftFile.Require(left.m_lEnd);
    rightFile.Require(right.m_lEnd);
    if (fSameFile) return true;
    for (std::int64_t lAt = 0; lAt < lLength; lAt += kBlockFrames) {
        if (checkpoint) checkpoint();
        std::int64_t const lFrames = std::min(kBlockFrames, lLength - lAt);
        if (!SameSamples(leftFile.Read(left.m_lStart + lAt, lFrames, left.m_Channels),
                         rightFile.Read(right.m_lStart + lAt, lFrames, right.m_Channels)))
            return false;
    }
    return true;
}
