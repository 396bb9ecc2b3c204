#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "link/MappedSegment.h"
#include "link/SharedSegments.h"
#include "link/TANClientInterProcess.h"

/// What the user of the check chose.
struct HostCheckOptions {
    /// Numbers of three empty tracks of the AudioSuite document, on which the commands are tried.
    std::array<int, 3> tracks{0, 1, 2};
    /// Longest time that one rule may take, in milliseconds.
    int nPatienceMs = 20'000;
    /// How long the heartbeat is watched, in milliseconds.
    int nHeartbeatMs = 2500;
    /// Names of the only rules to try, with those that they need; empty: all.
    std::vector<std::string> only{};
    /// Names of rules to leave out, with those that need them.
    std::vector<std::string> skip{};
};

/// One exchange as the client saw it.
struct CheckedExchange {
    int nStatus;           ///< as `CTANClientInterProcess::SendTANMessage`
    std::string strReply;  ///< what the script printed
    std::string strError;  ///< the script's error
    double dMilliseconds;

    bool IsGood() const { return nStatus == 0 && strError.empty(); }
    /// "answered … in 0.1 ms", or why it was not.
    std::string Describe() const;
};

/// The host under judgement, and what earlier rules found out about it. Used on one thread.
class CCheckedHost {
public:
    explicit CCheckedHost(HostCheckOptions const& options) : m_options(options) {}
    ~CCheckedHost();
    CCheckedHost(CCheckedHost const&) = delete;
    CCheckedHost& operator=(CCheckedHost const&) = delete;

    HostCheckOptions const& Options() const { return m_options; }
    CTANClientInterProcess& Client() { return m_client; }
    /// Scratch track 0, 1 or 2, as the host numbers it.
    int Track(int nScratch) const { return m_options.tracks[static_cast<std::size_t>(nScratch)]; }

    /// The id that the directory names; 0 or less when there is none.
    int Id() { return m_client.GetCurrentIdFromMainDirectory(); }

    /// The segments, mapped; each throws when there is none.
    CMappedSegment MapDirectory() const { return CMappedSegment(szDirectorySegment); }
    CMappedSegment MapMessages();

    /// Sends a script. The time-out is for each of the three waits.
    CheckedExchange Exchange(std::string script, int nTimeoutMs = 5000);
    /// The number that a script in the AudioSuite document prints; nothing without a good answer.
    std::optional<std::int64_t> Ask(std::string const& strLines);
    /// How many regions a scratch track holds.
    std::optional<std::int64_t> RegionCount(int nScratch);

    /// The host's sample rate, or 48000 when it does not say.
    int SampleRate();
    /// Writes a second of sound with the host's sample rate; its path. It goes with this object.
    std::string WriteTake(std::string const& strName, int nChannels = 1);
    /// The time-line position at which the takes are captured, and their length, in samples.
    static constexpr std::int64_t kPosition = 1000;
    int TakeLength() { return SampleRate(); }

    /// Set once something was captured: there is something to clear.
    bool m_fTracksUsed = false;

private:
    HostCheckOptions m_options;
    CTANClientInterProcess m_client;
    std::string m_strDirectory;
    int m_nSampleRate = 0;
};
