#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// An audio file that cannot be opened, read or written; the text names the file and the reason.
class CAudioFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Called now and then by long work; it may throw to end the work. May be empty.
using CCheckpoint = std::function<void()>;

/// Sound in memory: one row of samples per channel, all rows of one length, full scale 1.0.
struct CAudio {
    int m_nSampleRate = 0;
    std::vector<std::vector<float>> m_Channels;

    /// Samples per channel; 0 without channels.
    std::int64_t Frames() const {
        return m_Channels.empty() ? 0 : static_cast<std::int64_t>(m_Channels.front().size());
    }
};

/// What a file says about itself.
struct CAudioFileInfo {
    std::int64_t m_lFrames = 0;
    int m_nChannels = 0;
    int m_nSampleRate = 0;
};

/// How samples are stored in a file that is written.
enum class SampleFormat { Float32, Pcm24 };

/// An audio file opened for reading, any format that libsndfile knows. Only regular files are
/// opened: a pipe or a device is refused and never waited for. Used by one thread.
class CAudioFile {
public:
    /// Throws `CAudioFileError` when the file is missing, unreadable or no audio.
    explicit CAudioFile(std::string const& strPath);
    ~CAudioFile();
    CAudioFile(CAudioFile&&) noexcept;
    CAudioFile& operator=(CAudioFile&&) noexcept;

    CAudioFileInfo const& Info() const;

    /// Throws `CAudioFileError` when the file is shorter than so many samples.
    void Require(std::int64_t lFrames) const;

    /// Reads samples [lStart, lStart + lFrames) of the given channels. What lies outside the file
    /// is silence. Throws `CAudioFileError` for a channel that the file does not have and for a
    /// file that breaks off.
    CAudio Read(std::int64_t lStart, std::int64_t lFrames, std::vector<int> const& channels);

private:
    struct CState;
    std::unique_ptr<CState> m_pState;
};

/// A WAV file being written under a temporary name beside its place; it appears whole with
/// `Finish` and not at all without it. Beyond 4 GiB it becomes an RF64 file.
class CAudioWriter {
public:
    /// Throws `CAudioFileError` when the file cannot be made.
    CAudioWriter(std::string const& strPath, int nSampleRate, int nChannels, SampleFormat format);
    ~CAudioWriter();
    CAudioWriter(CAudioWriter const&) = delete;
    CAudioWriter& operator=(CAudioWriter const&) = delete;

    /// Appends all channels of a block; it has as many as the file. Throws `CAudioFileError`.
    void Write(CAudio const& audio);

    /// Closes the file and gives it its name. Throws `CAudioFileError`.
    void Finish();

private:
    struct CState;
    std::unique_ptr<CState> m_pState;
};

/// What the file says about itself; throws like `CAudioFile`.
CAudioFileInfo ProbeAudioFile(std::string const& strPath);

/// Writes a whole sound as a WAV file.
void WriteAudioFile(std::string const& strPath, CAudio const& audio,
                    SampleFormat format = SampleFormat::Float32);

/// A stretch of some channels of a file.
struct CAudioRange {
    std::string m_strFile;
    std::int64_t m_lStart = 0;
    std::int64_t m_lEnd = 0;
    std::vector<int> m_Channels;
};

/// Whether two stretches hold the same decoded samples at the same rate in the same number of
/// channels.
/// Throws `CAudioFileError`, also when a file does not reach that far.
bool SameAudio(CAudioRange const& left, CAudioRange const& right,
               CCheckpoint const& checkpoint = {});
