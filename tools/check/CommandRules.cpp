#include <array>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "FileIO/FileName.h"
#include "tools/AudioProbe.h"
#include "tools/InputOutput.h"
#include "tools/check/CheckText.h"
#include "tools/check/CheckedHost.h"
#include "tools/check/Rule.h"

namespace {

constexpr bool kAudioSuite = true;
constexpr int kInput = 0, kDub = 1, kOutput = 2;
constexpr std::array<int, 3> kScratchTracks{kInput, kDub, kOutput};

// What the client says when something is wrong, or that nothing is.
std::string Texts(CTANClientInterProcess const& client) {
    if (client.m_strLastError.empty()) return "no error";
    return Quoted(client.m_strLastError + (client.m_strAdvice.empty() ? "" : " ") +
                  client.m_strAdvice);
}

std::string Number(std::optional<std::int64_t> lNumber) {
    return lNumber ? std::to_string(*lNumber) : "no number";
}

Finding List(CCheckedHost& host, bool fAudioSuite) {
    std::vector<std::string> tracks;
    const int nResult = host.Client().ListTracksWithTimeout(fAudioSuite, &tracks, 5000);
    if (nResult != 0 || tracks.empty()) return Failed(Texts(host.Client()));
    return Passed(std::to_string(tracks.size()) + " tracks, the first " + Shorten(tracks[0]));
}
Finding ListsAudioSuite(CCheckedHost& host) {
    return List(host, true);
}
Finding ListsScript(CCheckedHost& host) {
    return List(host, false);
}

Finding TracksAreEmpty(CCheckedHost& host) {
    for (const int nScratch : kScratchTracks) {
        const std::optional<std::int64_t> lCount = host.RegionCount(nScratch);
        const std::string strTrack = "track " + std::to_string(host.Track(nScratch));
        if (!lCount) return Failed("GetRegionCount of " + strTrack + " gives no number");
        if (*lCount > 0) return NotTried(strTrack + " is in use: name empty ones with --tracks");
    }
    return Passed("tracks " + std::to_string(host.Track(kInput)) + ", " +
                  std::to_string(host.Track(kDub)) + " and " + std::to_string(host.Track(kOutput)));
}

// As few digits as it takes to tell the number.
std::string Shortest(double dNumber) {
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", dNumber);
    return text;
}

Finding TellsOffset(CCheckedHost& host) {
    const double dOffset = host.Client().GetLinkSMPTEOffset(kAudioSuite);
    return PassedIf(host.Client().m_strLastError.empty(),
                    Shortest(dOffset) + ", " + Texts(host.Client()));
}

Finding Prints(CCheckedHost& host) {
    host.Client().PrintToTavarin("tavarin check-host was here");
    return PassedIf(host.Client().m_strLastError.empty(), Texts(host.Client()));
}

bool IsDuplicate(CCheckedHost& host, std::int64_t lPosition) {
    CFileName file(host.WriteTake("take.wav").c_str());
    return host.Client().CheckDuplicateRegion(kAudioSuite, host.Track(kInput), &file,
                                              static_cast<double>(lPosition), 0, host.TakeLength());
}

Finding NewTakeIsNoDuplicate(CCheckedHost& host) {
    const bool fDuplicate = IsDuplicate(host, CCheckedHost::kPosition);
    return PassedIf(!fDuplicate && host.Client().m_strLastError.empty(), Texts(host.Client()));
}

// Sends a take to a scratch track at the checks' position; empty when the host took it.
std::string Send(CCheckedHost& host, int nScratch, std::string const& strPath, int nMask = 0) {
    host.m_fTracksUsed = true;
    CFileName file(strPath.c_str());
    const int nStatus =
        host.Client().SendFile(kAudioSuite, host.Track(nScratch), &file, CCheckedHost::kPosition, 0,
                               host.TakeLength(), nMask);
    if (nStatus != 0) return "status " + std::to_string(nStatus);
    return host.Client().m_strLastError.empty() ? "" : Texts(host.Client());
}

Finding Captures(CCheckedHost& host) {
    const std::string strWrong = Send(host, kInput, host.WriteTake("take.wav"));
    if (!strWrong.empty()) return Failed(strWrong);
    const std::string strRegion =
        "idRegion = GetRegionID(GetTrackID(" + std::to_string(host.Track(kInput)) + "), 0)\n";
    const auto lCount = host.RegionCount(kInput);
    const auto lStart = host.Ask(strRegion + "print(GetRegionStartPosition(idRegion))\n");
    const auto lEnd = host.Ask(strRegion + "print(GetRegionEndPosition(idRegion))\n");
    return PassedIf(lCount == 1 && lStart == CCheckedHost::kPosition &&
                        lEnd == CCheckedHost::kPosition + host.TakeLength(),
                    Number(lCount) + " region from " + Number(lStart) + " to " + Number(lEnd));
}

Finding CaptureCounts(CCheckedHost& host) {
    host.Client().NeedsUpdate();
    const std::int32_t nBefore = host.Client().GetUpdateCount();
    const std::string strWrong = Send(host, kDub, host.WriteTake("dub.wav"));
    const std::int32_t nAfter = host.Client().GetUpdateCount();
    const bool fTold = host.Client().NeedsUpdate();
    if (!strWrong.empty()) return Failed(strWrong);
    return PassedIf(nAfter != nBefore && fTold,
                    "from " + std::to_string(nBefore) + " to " + std::to_string(nAfter) +
                        (fTold ? ", and so does the directory's" : ", but not the directory's"));
}

Finding SameTakeIsADuplicate(CCheckedHost& host) {
    const bool fDuplicate = IsDuplicate(host, CCheckedHost::kPosition);
    return PassedIf(fDuplicate, Texts(host.Client()));
}

Finding MovedTakeIsNone(CCheckedHost& host) {
    const bool fDuplicate = IsDuplicate(host, CCheckedHost::kPosition + 1);
    return PassedIf(!fDuplicate, Texts(host.Client()));
}

Finding TakesChannels(CCheckedHost& host) {
    const std::string strWrong = Send(host, kOutput, host.WriteTake("stereo.wav", 2), 0b10);
    return PassedIf(strWrong.empty(), strWrong.empty() ? "channel 1 of two" : strWrong);
}

Finding TakesAnyName(CCheckedHost& host) {
    const std::string strWrong = Send(host, kOutput, host.WriteTake("t\\n \xC3\xA4 'x'.wav"));
    return PassedIf(strWrong.empty(), strWrong.empty() ? "taken" : strWrong);
}

Finding MissingFileIsAnError(CCheckedHost& host) {
    const std::string strWrong = Send(host, kOutput, "/nowhere/missing.wav");
    return PassedIf(!strWrong.empty(), strWrong.empty() ? "no error" : strWrong);
}

Finding Aligns(CCheckedHost& host) {
    host.Client().ClearTrack(kAudioSuite, host.Track(kOutput));
    const std::int64_t lStart = CCheckedHost::kPosition;
    const std::int64_t lEnd = lStart + host.TakeLength();
    const bool fDone = host.Client().CreateAPT(kAudioSuite, host.Track(kInput), lStart, lEnd,
                                               host.Track(kDub), lStart, lEnd, host.Track(kOutput));
    const std::string strTexts = Texts(host.Client());
    const bool fNoError = host.Client().m_strLastError.empty();
    const auto lRegions = host.RegionCount(kOutput);
    return PassedIf(fDone && fNoError && lRegions == 1,
                    strTexts + ", regions on the output track: " + Number(lRegions));
}

Finding Renders(CCheckedHost& host) {
    std::int64_t lStart = 0, lEnd = 0;
    const bool fDone = host.Client().RenderSelectedRegion(kAudioSuite, -1, &lStart, &lEnd);
    return PassedIf(fDone && lStart < lEnd,
                    fDone ? host.Client().m_strRegionInfo : Texts(host.Client()));
}

Finding Exports(CCheckedHost& host) {
    CFileName exported;
    if (!host.Client().ExportSelectedRegion(kAudioSuite, 0, &exported)) {
        return Failed(Texts(host.Client()));
    }
    const CAudioLength length = ProbeAudio(exported.GetFullPath());
    return PassedIf(length.m_lFrames > 0, std::to_string(length.m_lFrames) + " samples at " +
                                              std::to_string(length.m_nSampleRate) + " Hz");
}

Finding Doubles(CCheckedHost& host) {
    host.Client().ClearTrack(kAudioSuite, host.Track(kOutput));
    const std::int64_t lStart = CCheckedHost::kPosition;
    const bool fDone =
        host.Client().CreateDoubler(kAudioSuite, host.Track(kInput), lStart,
                                    lStart + host.TakeLength(), 1, host.Track(kOutput));
    const std::string strTexts = Texts(host.Client());
    const bool fNoError = host.Client().m_strLastError.empty();
    const auto lRegions = host.RegionCount(kOutput);
    return PassedIf(fDone && fNoError && lRegions == 1,
                    strTexts + ", regions on the output track: " + Number(lRegions));
}

Finding Clears(CCheckedHost& host) {
    if (!host.m_fTracksUsed) return NotTried("there is nothing to clear");
    std::string strSeen = "regions left:";
    bool fEmpty = true;
    for (const int nScratch : kScratchTracks) {
        host.Client().ClearTrack(kAudioSuite, host.Track(nScratch));
        const auto lRegions = host.RegionCount(nScratch);
        fEmpty = fEmpty && lRegions == 0;
        strSeen += " " + Number(lRegions);
    }
    return PassedIf(fEmpty, strSeen);
}

constexpr Rule kRules[] = {
    {"print", "a text can be printed in its log", "answer", Prints, "print is missing",
     Place::szCommands},
    {"list-audiosuite", "the AudioSuite document's tracks are listed", "answer", ListsAudioSuite,
     "SelectAudioSuiteDocument, GetTrackCount, GetTrackID or GetTrackName is missing or wrong",
     Place::szCommands},
    {"list-script", "the script document's tracks are listed", "answer", ListsScript,
     "SelectScriptDocument, GetTrackCount, GetTrackID or GetTrackName is missing or wrong",
     Place::szCommands},
    {"offset", "the SMPTE offset is told", "answer", TellsOffset,
     "GetLinkSMPTEOffset is missing or prints no number", Place::szCommands},
    {"scratch", "three empty tracks are there to try on", "list-audiosuite", TracksAreEmpty,
     "GetRegionCount is missing, or there are fewer tracks than --tracks names", Place::szCommands},
    {"not-duplicate", "a new take is no duplicate", "scratch", NewTakeIsNoDuplicate,
     "the search for the same file at the same place finds what is not there", Place::szCommands},
    {"capture", "a captured file becomes a region at its place", "not-duplicate", Captures,
     "the file is not put at the position that the script says, in samples of the session",
     Place::szCommands},
    {"capture-count", "a capture changes the update count", "capture", CaptureCounts,
     "the update counter is not changed, or not in the directory too", Place::szCommands},
    {"duplicate", "the same take at the same place is a duplicate", "capture", SameTakeIsADuplicate,
     "a region is not found again by its file, place and extent", Place::szCommands},
    {"moved", "the same take at another place is none", "capture", MovedTakeIsNone,
     "the place is left out when regions are compared", Place::szCommands},
    {"channels", "one channel of a file can be captured", "capture", TakesChannels,
     "the channel mask is not understood", Place::szCommands},
    {"file-names", "file names may hold any character but a quote", "capture", TakesAnyName,
     "escapes or other characters in a path are changed on the way to the file", Place::szCommands},
    {"missing-file", "a file that is not there is an error", "capture", MissingFileIsAnError,
     "a file that cannot be opened is passed over", Place::szCommands},
    {"apt", "an APT process aligns a dub with a guide", "capture-count", Aligns,
     "the process is not created, or has put no region on the output track when the script ends",
     Place::szCommands},
    {"render", "the region of the last process can be rendered", "apt", Renders,
     "the last process or its region is not found, or the positions are not printed",
     Place::szCommands},
    {"export", "it can be exported into an audio file", "apt", Exports,
     "the path is printed before the file is there, or is not a full one", Place::szCommands},
    {"doubler", "a Doubler process doubles a voice", "capture", Doubles,
     "the process is not created, or has put no region on the output track when the script ends",
     Place::szCommands},
    {"clear", "a cleared track is empty", "scratch", Clears, "regions of the track are left",
     Place::szCommands},
};

}  // namespace

std::span<const Rule> CommandRules() {
    return kRules;
}
