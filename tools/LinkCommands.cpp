#include "tools/LinkCommands.h"

#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>

#include "FileIO/FileName.h"
#include "tools/AboveZero.h"
#include "tools/AudioCopy.h"
#include "tools/AudioProbe.h"
#include "tools/InputOutput.h"
#include "tools/LinkRescue.h"
#include "tools/LinkSession.h"
#include "tools/LinkWatch.h"
#include "tools/TimelinePosition.h"
#include "tools/ToolFailure.h"

namespace {

using nlohmann::json;
using OptionsPointer = std::shared_ptr<CLinkOptions const>;

// Start and end of a stretch of the timeline, as given and then in samples. What is not given is
// taken from the first region of the track.
struct Extent {
    std::string strStart, strEnd;
    std::optional<std::int64_t> lStart;
    std::optional<std::int64_t> lEnd;
};

constexpr char szTrackHelp[] = "number from 0, or name";

void AddExtent(CLI::App& command, std::string const& strPrefix, Extent& extent) {
    command.add_option("--" + strPrefix + "start", extent.strStart,
                       "start: samples, 2.5s or 01:00:00:00 (default: the track's first region)");
    command.add_option("--" + strPrefix + "end", extent.strEnd,
                       "end, likewise (default: the track's first region)");
}

std::optional<std::int64_t> PlaceIn(CLinkSession& session, std::string const& strOption,
                                    std::string const& strText) {
    if (strText.empty()) return std::nullopt;
    const CTimelinePosition position =
        ReadTimelinePosition(strOption, strText, session.FrameRate());
    return std::llround(position.Samples(position.fSeconds ? session.SampleRate() : 1));
}

void FillExtent(CLinkSession& session, int nTrack, Extent& extent) {
    extent.lStart = PlaceIn(session, "the start", extent.strStart);
    extent.lEnd = PlaceIn(session, "the end", extent.strEnd);
    if (extent.lStart && extent.lEnd) return;
    std::string strReply =
        session.Run("if " + session.SelectDocument() + " then\n" +              //
                    "idTrack = GetTrackID(" + std::to_string(nTrack) + ")\n" +  //
                    "if GetRegionCount(idTrack) > 0 then\n" +                   //
                    "idRegion = GetRegionID(idTrack, 0)\n" +                    //
                    "print(2)\nprint(GetRegionStartPosition(idRegion))\n" +     //
                    "print(GetRegionEndPosition(idRegion))\n" +                 //
                    "end\nend\n");
    std::vector<std::string> values;
    session.Client().SplitResult(strReply, &values);
    if (values.size() != 2) {
        throw CToolFailure(exitNegative,
                           "track " + std::to_string(nTrack) +
                               " holds no region; capture something onto it first, or give the "
                               "start and the end");
    }
    if (!extent.lStart) extent.lStart = std::stoll(values[0]);
    if (!extent.lEnd) extent.lEnd = std::stoll(values[1]);
}

std::string DescribeExtent(Extent const& extent) {
    return std::to_string(*extent.lStart) + " to " + std::to_string(*extent.lEnd);
}

// An empty text, and null, where the host cannot tell.
std::string DescribeSession(std::optional<CLinkContents> const& contents) {
    if (!contents) return "";
    return "\nThe session has " + std::to_string(contents->tracks.size()) + " tracks, " +
           std::to_string(contents->regions.size()) + " regions and a sample rate of " +
           std::to_string(contents->nSampleRate) + " Hz.";
}

json SessionAsJson(std::optional<CLinkContents> const& contents, bool fAudioSuite) {
    if (!contents) return nullptr;
    return {{"document", fAudioSuite ? "AudioSuite" : "script"},
            {"sample_rate", contents->nSampleRate},
            {"tracks", contents->tracks},
            {"regions", contents->regions.size()}};
}

void ShowStatus(CLinkOptions const& options) {
    CLinkSession session(options, Patience::Short);
    const int id = session.RequireHost();
    const std::int64_t lProcess = session.Do([&] { return session.Client().GetTANProcessID(); });
    const std::int32_t nCount = session.Do([&] { return session.Client().GetUpdateCount(); });
    const std::optional<CLinkContents> contents = session.Contents();
    session.Print("Host " + std::to_string(id) + " is running (process " +
                      std::to_string(lProcess) + ") with a session selected; update count " +
                      std::to_string(nCount) + "." + DescribeSession(contents),
                  json{{"host", id},
                       {"process", lProcess},
                       {"update_count", nCount},
                       {"session", SessionAsJson(contents, session.IsAudioSuite())}});
}

void AddStatus(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("status", "say whether a host is running, and what its session holds");
    pCommand->callback([options] { ShowStatus(*options); });
}

void AddTracks(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("tracks", "list the host's tracks");
    pCommand->callback([options] {
        CLinkSession session(*options, Patience::Short);
        const std::vector<std::string> tracks = session.Tracks();
        std::string strText;
        for (std::size_t nTrack = 0; nTrack < tracks.size(); ++nTrack) {
            if (nTrack > 0) strText += '\n';
            strText += std::to_string(nTrack) + "  " + tracks[nTrack];
        }
        session.Print(strText, json{{"tracks", tracks}});
    });
}

void ListRegions(CLinkOptions const& options) {
    CLinkSession session(options, Patience::Short);
    const std::optional<CLinkContents> contents = session.Contents();
    if (!contents) session.Fail("the host does not tell its regions");
    std::string strText;
    json regions = json::array();
    for (CLinkRegion const& region : contents->regions) {
        std::string const& strName = contents->tracks[region.nTrack];
        char seconds[64];
        std::snprintf(seconds, sizeof seconds, " (%.2f s)",
                      static_cast<double>(region.lEnd - region.lStart) / contents->nSampleRate);
        strText += (strText.empty() ? "" : "\n") + std::to_string(region.nTrack) + "  " + strName +
                   "  " + std::to_string(region.lStart) + " to " + std::to_string(region.lEnd) +
                   seconds;
        regions.push_back({{"track", region.nTrack},
                           {"name", strName},
                           {"start", region.lStart},
                           {"end", region.lEnd}});
    }
    session.Print(strText.empty() ? "There are no regions." : strText,
                  json{{"sample_rate", contents->nSampleRate}, {"regions", regions}});
}

void AddRegions(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("regions", "list what lies where");
    pCommand->callback([options] { ListRegions(*options); });
}

struct CaptureArguments {
    std::string strFile;
    std::string strTrack;
    std::string strPosition;
    std::optional<double> dStart;
    std::optional<double> dEnd;
    std::vector<int> channels;
};

int ChannelMask(std::vector<int> const& channels) {
    int nMask = 0;
    for (const int nChannel : channels) nMask |= 1 << nChannel;
    return nMask;
}

CAudioLength RequireAudio(std::string const& strPath) {
    try {
        return ProbeAudio(strPath);
    } catch (std::exception const& failure) {
        throw CToolFailure(exitTrouble, failure.what(), "Give the path of an audio file.",
                           "unreadable");
    }
}

[[noreturn]] void RefuseCapture(std::string const& strWhy) {
    throw CToolFailure(exitTrouble, strWhy, "", "usage");
}

// What a host would cut, pass over or misunderstand is refused here.
void RequireSense(CaptureArguments const& arguments, std::string const& strPath,
                  CAudioLength const& length) {
    if (strPath.find_first_of("\"\n\r") != std::string::npos)
        RefuseCapture("the name " + Quoted(strPath) +
                      " has a quotation mark or a line end, which the link cannot carry");
    const double dStart = arguments.dStart.value_or(0);
    const auto dFrames = static_cast<double>(length.m_lFrames);
    const double dEnd = arguments.dEnd.value_or(dFrames);
    if (!(dStart >= 0 && dStart < dEnd && dEnd <= dFrames))
        RefuseCapture("--start and --end do not lie one behind the other in " + Quoted(strPath) +
                      ", which has " + std::to_string(length.m_lFrames) + " samples");
    std::set<int> seen;
    for (const int nChannel : arguments.channels) {
        if (nChannel >= length.m_nChannels)
            RefuseCapture(Quoted(strPath) + " has no channel " + std::to_string(nChannel) +
                          ": it has " + std::to_string(length.m_nChannels) + ", counted from 0");
        if (!seen.insert(nChannel).second)
            RefuseCapture("--channels names channel " + std::to_string(nChannel) + " twice");
    }
}

// What the host makes of a file of another rate is the host's business: the reference host
// resamples it.
void WarnOfAnotherRate(CLinkSession& session, std::string const& strPath, int nFileRate,
                       int nSessionRate) {
    if (nFileRate == nSessionRate) return;
    session.Warn(Quoted(strPath) + " has a sample rate of " + std::to_string(nFileRate) +
                 " Hz, the session has " + std::to_string(nSessionRate) +
                 " Hz: the host has to resample it");
}

void Capture(CLinkOptions const& options, CaptureArguments const& arguments) {
    const std::string strPath = std::filesystem::absolute(arguments.strFile).string();
    const CAudioLength length = RequireAudio(strPath);
    RequireSense(arguments, strPath, length);
    const CTimelinePosition position =
        ReadTimelinePosition("--position", arguments.strPosition, options.m_strFrameRate);
    CLinkSession session(options, Patience::Long);
    session.RequireHost();
    const int nTrack = session.TrackNumber(arguments.strTrack);
    CFileName file(strPath.c_str());
    const double dStart = arguments.dStart.value_or(0);
    const double dEnd = arguments.dEnd.value_or(static_cast<double>(length.m_lFrames));

    const int nSessionRate = session.SampleRate();
    const double dPosition = position.Samples(nSessionRate);
    CTANClientInterProcess& client = session.Client();
    const bool fDuplicate = session.Do([&] {
        return client.CheckDuplicateRegion(session.IsAudioSuite(), nTrack, &file, dPosition, dStart,
                                           dEnd);
    });
    if (fDuplicate) {
        session.Fail("");
    }
    session.RequireNoError();
    const int nStatus = session.Do([&] {
        return client.SendFile(session.IsAudioSuite(), nTrack, &file, dPosition, dStart, dEnd,
                               ChannelMask(arguments.channels));
    });
    if (nStatus != 0) session.Fail("the file could not be sent");
    session.RequireNoError();
    WarnOfAnotherRate(session, strPath, length.m_nSampleRate, nSessionRate);
    session.Print("Sent " + strPath + " to track " + std::to_string(nTrack) + ".",
                  json{{"file", strPath},
                       {"track", nTrack},
                       {"position", dPosition},
                       {"start", dStart},
                       {"end", dEnd},
                       {"file_rate", length.m_nSampleRate},
                       {"session_rate", nSessionRate}});
}

void AddCapture(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("capture", "hand an audio file over, unless the host has it already");
    const auto pArguments = std::make_shared<CaptureArguments>();
    pCommand->add_option("FILE", pArguments->strFile, "the audio file")->required();
    pCommand->add_option("--track", pArguments->strTrack, szTrackHelp)->required();
    pCommand
        ->add_option("--position", pArguments->strPosition,
                     "where the file's first sample lies on the timeline: samples of the session, "
                     "2.5s or 01:00:00:00")
        ->required();
    pCommand->add_option("--start", pArguments->dStart,
                         "first sample of the file used (default: 0)");
    pCommand->add_option("--end", pArguments->dEnd,
                         "end of what is used of the file (default: all)");
    pCommand->add_option("--channels", pArguments->channels, "channels used, such as 0,2")
        ->delimiter(',')
        ->check(CLI::Range(0, 30));
    pCommand->callback([options, pArguments] { Capture(*options, *pArguments); });
}

void AddRender(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("render", "have the host render its selected region in place");
    const auto pRate = std::make_shared<int>(-1);
    pCommand->add_option("--rate", *pRate, "warn when the host's sample rate is another, in Hz");
    pCommand->callback([options, pRate] {
        CLinkSession session(*options, Patience::Long);
        std::int64_t lStart = 0, lEnd = 0;
        CTANClientInterProcess& client = session.Client();
        const bool fRendered = session.Do([&] {
            return client.RenderSelectedRegion(session.IsAudioSuite(), *pRate, &lStart, &lEnd);
        });
        if (!fRendered) {
            session.Fail("the host rendered nothing");
        }
        if (!client.m_strLastError.empty()) session.Warn(client.m_strLastError);
        session.Print(client.m_strRegionInfo,
                      json{{"start", lStart}, {"end", lEnd}, {"info", client.m_strRegionInfo}});
    });
}

struct ExportArguments {
    std::string strTarget;
    bool fForce = false;
};

// What the host has exported, where the user wants it.
void Deliver(CLinkSession& session, std::string const& strExported, std::string const& strTarget) {
    const std::string strFile = strTarget.empty() ? strExported : strTarget;
    if (!strTarget.empty()) CopyAudio(strExported, strTarget);
    if (strTarget == "-") return;
    const CAudioLength length = RequireAudio(strFile);
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.2f",
                  static_cast<double>(length.m_lFrames) / length.m_nSampleRate);
    session.Print("File: " + strFile + " (" + std::to_string(length.m_lFrames) + " samples, " +
                      seconds + " s)",
                  json{{"file", strFile},
                       {"frames", length.m_lFrames},
                       {"sample_rate", length.m_nSampleRate}});
}

void Export(CLinkOptions const& options, ExportArguments const& arguments) {
    // Before the host is made to work for it.
    if (!arguments.strTarget.empty()) RequireAudioTarget(arguments.strTarget);
    RequireRoomFor(arguments.strTarget, arguments.fForce ? Replace::Yes : Replace::No);
    CLinkSession session(options, Patience::Long);
    CFileName exported;
    const bool fExported = session.Do([&] {
        return session.Client().ExportSelectedRegion(session.IsAudioSuite(), 0, &exported);
    });
    if (!fExported) {
        session.Fail("the host exported nothing");
    }
    Deliver(session, exported.GetFullPath(), arguments.strTarget);
}

void AddExport(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("export", "have the host write its selected region into a file");
    const auto pArguments = std::make_shared<ExportArguments>();
    pCommand->add_option("-o,--output", pArguments->strTarget,
                         "copy the exported file to this path, as .wav, .flac or .ogg; - for "
                         "standard output");
    pCommand->add_flag("--force", pArguments->fForce, "replace the file if it is there");
    pCommand->callback([options, pArguments] { Export(*options, *pArguments); });
}

struct AptArguments {
    std::string strGuide = "0", strDub = "1", strOutput = "2";
    int nGuide = 0, nDub = 0, nOutput = 0;
    Extent guide, dub;
};

void CreateApt(CLinkOptions const& options, AptArguments& arguments) {
    CLinkSession session(options, Patience::Long);
    arguments.nGuide = session.TrackNumber(arguments.strGuide);
    arguments.nDub = session.TrackNumber(arguments.strDub);
    arguments.nOutput = session.TrackNumber(arguments.strOutput);
    FillExtent(session, arguments.nGuide, arguments.guide);
    FillExtent(session, arguments.nDub, arguments.dub);
    const bool fCreated = session.Do([&] {
        return session.Client().CreateAPT(session.IsAudioSuite(), arguments.nGuide,
                                          *arguments.guide.lStart, *arguments.guide.lEnd,
                                          arguments.nDub, *arguments.dub.lStart,
                                          *arguments.dub.lEnd, arguments.nOutput);
    });
    if (!fCreated) {
        session.Fail("the process could not be created");
    }
    session.RequireNoError();
    session.Print("APT: guide on track " + std::to_string(arguments.nGuide) + " (" +
                      DescribeExtent(arguments.guide) + "), dub on track " +
                      std::to_string(arguments.nDub) + " (" + DescribeExtent(arguments.dub) +
                      "), output on track " + std::to_string(arguments.nOutput) + ".",
                  json{{"process", "APT"},
                       {"guide", arguments.nGuide},
                       {"dub", arguments.nDub},
                       {"output", arguments.nOutput}});
}

void AddApt(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("apt", "have the host align a dub with a guide");
    const auto pArguments = std::make_shared<AptArguments>();
    pCommand->add_option("--guide", pArguments->strGuide, "guide track")->capture_default_str();
    AddExtent(*pCommand, "guide-", pArguments->guide);
    pCommand->add_option("--dub", pArguments->strDub, "dub track")->capture_default_str();
    AddExtent(*pCommand, "dub-", pArguments->dub);
    pCommand->add_option("--output", pArguments->strOutput, "output track")->capture_default_str();
    pCommand->callback([options, pArguments] { CreateApt(*options, *pArguments); });
}

struct DoublerArguments {
    std::string strInput = "0", strOutput;
    int nInput = 0, nOutput = 0;
    Extent input;
};

void CreateDoubler(CLinkOptions const& options, DoublerArguments& arguments) {
    CLinkSession session(options, Patience::Long);
    arguments.nInput = session.TrackNumber(arguments.strInput);
    arguments.nOutput = session.TrackNumber(arguments.strOutput);
    FillExtent(session, arguments.nInput, arguments.input);
    const bool fCreated = session.Do([&] {
        return session.Client().CreateDoubler(session.IsAudioSuite(), arguments.nInput,
                                              *arguments.input.lStart, *arguments.input.lEnd, 1,
                                              arguments.nOutput);
    });
    if (!fCreated) {
        session.Fail("the process could not be created");
    }
    session.RequireNoError();
    session.Print(
        "Doubler: input on track " + std::to_string(arguments.nInput) + " (" +
            DescribeExtent(arguments.input) + "), output on track " +
            std::to_string(arguments.nOutput) + ".",
        json{{"process", "Doubler"}, {"input", arguments.nInput}, {"output", arguments.nOutput}});
}

void AddDoubler(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("doubler", "have the host double a voice");
    const auto pArguments = std::make_shared<DoublerArguments>();
    pCommand->add_option("--input", pArguments->strInput, "input track")->capture_default_str();
    AddExtent(*pCommand, "", pArguments->input);
    pCommand->add_option("--output", pArguments->strOutput, "output track")->required();
    pCommand->callback([options, pArguments] { CreateDoubler(*options, *pArguments); });
}

void AddClear(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("clear", "delete a track's regions and marker areas");
    const auto pTrack = std::make_shared<std::string>();
    pCommand->add_option("TRACK", *pTrack, szTrackHelp)->required();
    pCommand->callback([options, pTrack] {
        CLinkSession session(*options, Patience::Long);
        const int nTrack = session.TrackNumber(*pTrack);
        session.Do([&] { session.Client().ClearTrack(session.IsAudioSuite(), nTrack); });
        session.RequireNoError();
        session.Print("Track " + std::to_string(nTrack) + " is empty.", json{{"cleared", nTrack}});
    });
}

void AddOffset(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("offset", "read the host's SMPTE offset");
    pCommand->callback([options] {
        CLinkSession session(*options, Patience::Short);
        const double dOffset =
            session.Do([&] { return session.Client().GetLinkSMPTEOffset(session.IsAudioSuite()); });
        session.RequireNoError();
        session.Print(json(dOffset).dump(), json{{"offset", dOffset}});
    });
}

// As it has to stand between the quotation marks of a script to be that text and nothing else.
std::string EscapedForScript(std::string const& strText) {
    std::string strEscaped;
    for (const char c : strText) {
        if (c == '"' || c == '\\') strEscaped += '\\';
        strEscaped += c == '\n' ? "\\n" : std::string(1, c);
    }
    return strEscaped;
}

void AddPrint(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("print", "print a text in the host's log");
    const auto pText = std::make_shared<std::string>();
    const auto pScript = std::make_shared<bool>(false);
    pCommand->add_option("TEXT", *pText, "the text")->required();
    pCommand->add_flag("--script", *pScript,
                       "the text stands between the quotation marks of a script as it is");
    pCommand->callback([options, pText, pScript] {
        CLinkSession session(*options, Patience::Short);
        const std::string strText = *pScript ? *pText : EscapedForScript(*pText);
        if (*pScript) session.ShowPlacesInScript();
        session.Do([&] { session.Client().PrintToTavarin(strText.c_str()); });
        session.RequireNoError();
    });
}

void AddRun(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("run", "run a script and show what it printed");
    const auto pFile = std::make_shared<std::string>();
    pCommand->add_option("FILE", *pFile, "the script; - for standard input")->required();
    pCommand->callback([options, pFile] {
        const std::string strScript = ReadInput(*pFile);
        CLinkSession session(*options, Patience::Long);
        session.ShowPlacesInScript();
        const std::string strReply = session.Run(strScript);
        if (options->m_fJson) {
            session.Print("", json{{"printed", strReply}});
        } else {
            std::fputs(strReply.c_str(), stdout);
        }
    });
}

void AddRescue(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("rescue", "send away whoever waits for a host that is proven dead");
    const auto pId = std::make_shared<int>(1);
    pCommand->add_option("--id", *pId, "the dead host's id")
        ->check(AboveZero())
        ->capture_default_str();
    pCommand->callback([options, pId] {
        const CRescue rescue = RescueFromDeadHost(*pId);
        if (!rescue.fDone)
            throw CToolFailure(
                exitNegative,
                "host " + std::to_string(*pId) + " is not proven dead: " + rescue.strWhy,
                "Nobody was sent away.", "refused");
        CLinkSession(*options, Patience::Short)
            .Print("Whoever waited for host " + std::to_string(*pId) + " was sent away.",
                   json{{"rescued", *pId}});
    });
}

void AddWatch(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("watch", "show host, session and tracks until interrupted");
    pCommand->callback([options] { WatchLink(*options); });
}

}  // namespace

void AddLinkCommands(CLI::App& app) {
    CLI::App* const pLink = app.add_subcommand("link", "talk to the running host application");
    pLink->require_subcommand(1);
    pLink->fallthrough();
    const auto pOptions = std::make_shared<CLinkOptions>();
    pLink->add_flag("--json", pOptions->m_fJson, "print JSON");
    pLink->add_flag("--audiosuite", pOptions->m_fAudioSuite,
                    "use the host's AudioSuite document instead of its script document");
    pLink
        ->add_option("--timeout", pOptions->m_dTimeout,
                     "seconds to wait for the host (default: 5 for commands that only ask, none "
                     "for those that work)")
        ->check(AboveZero());
    pLink
        ->add_option("--fps", pOptions->m_strFrameRate,
                     "frames per second of time code, as 29.97 or 30000/1001")
        ->capture_default_str();
    for (const auto add :
         {AddStatus, AddTracks, AddRegions, AddCapture, AddRender, AddExport, AddApt, AddDoubler,
          AddClear, AddOffset, AddPrint, AddRun, AddRescue, AddWatch}) {
        add(*pLink, pOptions);
    }
}
