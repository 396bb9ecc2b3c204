#include "tools/LinkCommands.h"

#include <filesystem>
#include <memory>
#include <optional>

#include "FileIO/FileName.h"
#include "tools/AudioProbe.h"
#include "tools/InputOutput.h"
#include "tools/LinkSession.h"
#include "tools/LinkWatch.h"
#include "tools/ToolFailure.h"

namespace {

using nlohmann::json;
using OptionsPointer = std::shared_ptr<CLinkOptions const>;

// Start and end of a stretch of the timeline, in samples. What is not given is taken from the first
// region of the track.
struct Extent {
    std::optional<std::int64_t> lStart;
    std::optional<std::int64_t> lEnd;
};

void AddExtent(CLI::App& command, std::string const& strPrefix, Extent& extent) {
    command.add_option("--" + strPrefix + "start", extent.lStart,
                       "start in samples (default: the track's first region)");
    command.add_option("--" + strPrefix + "end", extent.lEnd,
                       "end in samples (default: the track's first region)");
}

void FillExtent(CLinkSession& session, int nTrack, Extent& extent) {
    if (extent.lStart && extent.lEnd) return;
    const std::string strDocument =
        session.IsAudioSuite() ? "SelectAudioSuiteDocument" : "SelectScriptDocument";
    std::string strReply =
        session.Run("if " + strDocument + "() then\n" +                         //
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

void AddStatus(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("status", "say whether a host is running");
    pCommand->callback([options] {
        CLinkSession session(*options);
        const int id = session.RequireHost();
        const std::int64_t lProcess = session.Client().GetTANProcessID();
        const std::int32_t nCount = session.Client().GetUpdateCount();
        session.Print("Host " + std::to_string(id) + " is running (process " +
                          std::to_string(lProcess) + ") with a session selected; update count " +
                          std::to_string(nCount) + ".",
                      json{{"host", id}, {"process", lProcess}, {"update_count", nCount}});
    });
}

void AddTracks(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("tracks", "list the host's tracks");
    pCommand->callback([options] {
        CLinkSession session(*options);
        const std::vector<std::string> tracks = session.Tracks();
        std::string strText;
        for (std::size_t nTrack = 0; nTrack < tracks.size(); ++nTrack) {
            if (nTrack > 0) strText += '\n';
            strText += std::to_string(nTrack) + "  " + tracks[nTrack];
        }
        session.Print(strText, json{{"tracks", tracks}});
    });
}

struct CaptureArguments {
    std::string strFile;
    int nTrack = 0;
    double dPosition = 0;
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
        throw CToolFailure(exitTrouble,
                           std::string(failure.what()) + "; give the path of an audio file");
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
    CLinkSession session(options);
    session.RequireHost();
    const std::string strPath = std::filesystem::absolute(arguments.strFile).string();
    const CAudioLength length = RequireAudio(strPath);
    CFileName file(strPath.c_str());
    const double dStart = arguments.dStart.value_or(0);
    const double dEnd = arguments.dEnd.value_or(static_cast<double>(length.m_lFrames));

    const int nSessionRate = session.SampleRate();
    CTANClientInterProcess& client = session.Client();
    if (client.CheckDuplicateRegion(session.IsAudioSuite(), arguments.nTrack, &file,
                                    arguments.dPosition, dStart, dEnd)) {
        session.Fail("");
    }
    session.RequireNoError();
    const int nStatus =
        client.SendFile(session.IsAudioSuite(), arguments.nTrack, &file, arguments.dPosition,
                        dStart, dEnd, ChannelMask(arguments.channels));
    if (nStatus != 0) session.Fail("the file could not be sent");
    session.RequireNoError();
    WarnOfAnotherRate(session, strPath, length.m_nSampleRate, nSessionRate);
    session.Print("Sent " + strPath + " to track " + std::to_string(arguments.nTrack) + ".",
                  json{{"file", strPath},
                       {"track", arguments.nTrack},
                       {"position", arguments.dPosition},
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
    pCommand->add_option("--track", pArguments->nTrack, "track number, from 0")->required();
    pCommand
        ->add_option(
            "--position", pArguments->dPosition,
            "where the file's first sample lies on the timeline, in samples of the session")
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
        CLinkSession session(*options);
        std::int64_t lStart = 0, lEnd = 0;
        CTANClientInterProcess& client = session.Client();
        if (!client.RenderSelectedRegion(session.IsAudioSuite(), *pRate, &lStart, &lEnd)) {
            session.Fail("the host rendered nothing");
        }
        if (!client.m_strLastError.empty()) session.Warn(client.m_strLastError);
        session.Print(client.m_strRegionInfo,
                      json{{"start", lStart}, {"end", lEnd}, {"info", client.m_strRegionInfo}});
    });
}

void Export(CLinkOptions const& options, std::string const& strTarget) {
    CLinkSession session(options);
    CFileName exported;
    if (!session.Client().ExportSelectedRegion(session.IsAudioSuite(), 0, &exported)) {
        session.Fail("the host exported nothing");
    }
    std::string strFile = exported.GetFullPath();
    if (!strTarget.empty()) {
        std::error_code error;
        std::filesystem::copy_file(strFile, strTarget,
                                   std::filesystem::copy_options::overwrite_existing, error);
        if (error) {
            throw CToolFailure(exitTrouble, "cannot copy " + strFile + " to " + strTarget + ": " +
                                                error.message());
        }
        strFile = strTarget;
    }
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

void AddExport(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("export", "have the host write its selected region into a file");
    const auto pTarget = std::make_shared<std::string>();
    pCommand->add_option("-o,--output", *pTarget, "copy the exported file to this path");
    pCommand->callback([options, pTarget] { Export(*options, *pTarget); });
}

struct AptArguments {
    int nGuide = 0, nDub = 1, nOutput = 2;
    Extent guide, dub;
};

void CreateApt(CLinkOptions const& options, AptArguments& arguments) {
    CLinkSession session(options);
    FillExtent(session, arguments.nGuide, arguments.guide);
    FillExtent(session, arguments.nDub, arguments.dub);
    if (!session.Client().CreateAPT(session.IsAudioSuite(), arguments.nGuide,
                                    *arguments.guide.lStart, *arguments.guide.lEnd, arguments.nDub,
                                    *arguments.dub.lStart, *arguments.dub.lEnd,
                                    arguments.nOutput)) {
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
    pCommand->add_option("--guide", pArguments->nGuide, "guide track")->capture_default_str();
    AddExtent(*pCommand, "guide-", pArguments->guide);
    pCommand->add_option("--dub", pArguments->nDub, "dub track")->capture_default_str();
    AddExtent(*pCommand, "dub-", pArguments->dub);
    pCommand->add_option("--output", pArguments->nOutput, "output track")->capture_default_str();
    pCommand->callback([options, pArguments] { CreateApt(*options, *pArguments); });
}

struct DoublerArguments {
    int nInput = 0, nOutput = 1;
    Extent input;
};

void CreateDoubler(CLinkOptions const& options, DoublerArguments& arguments) {
    CLinkSession session(options);
    FillExtent(session, arguments.nInput, arguments.input);
    if (!session.Client().CreateDoubler(session.IsAudioSuite(), arguments.nInput,
                                        *arguments.input.lStart, *arguments.input.lEnd, 1,
                                        arguments.nOutput)) {
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
    pCommand->add_option("--input", pArguments->nInput, "input track")->capture_default_str();
    AddExtent(*pCommand, "", pArguments->input);
    pCommand->add_option("--output", pArguments->nOutput, "output track")->capture_default_str();
    pCommand->callback([options, pArguments] { CreateDoubler(*options, *pArguments); });
}

void AddClear(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand =
        link.add_subcommand("clear", "delete a track's regions and marker areas");
    const auto pTrack = std::make_shared<int>(0);
    pCommand->add_option("TRACK", *pTrack, "track number, from 0")->required();
    pCommand->callback([options, pTrack] {
        CLinkSession session(*options);
        session.Client().ClearTrack(session.IsAudioSuite(), *pTrack);
        session.RequireNoError();
        session.Print("Track " + std::to_string(*pTrack) + " is empty.",
                      json{{"cleared", *pTrack}});
    });
}

void AddOffset(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("offset", "read the host's SMPTE offset");
    pCommand->callback([options] {
        CLinkSession session(*options);
        const double dOffset = session.Client().GetLinkSMPTEOffset(session.IsAudioSuite());
        session.RequireNoError();
        session.Print(json(dOffset).dump(), json{{"offset", dOffset}});
    });
}

void AddPrint(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("print", "print a text in the host's log");
    const auto pText = std::make_shared<std::string>();
    pCommand->add_option("TEXT", *pText, "the text")->required();
    pCommand->callback([options, pText] {
        CLinkSession session(*options);
        session.Client().PrintToTavarin(pText->c_str());
        session.RequireNoError();
    });
}

void AddRun(CLI::App& link, OptionsPointer options) {
    CLI::App* const pCommand = link.add_subcommand("run", "run a script and show what it printed");
    const auto pFile = std::make_shared<std::string>();
    const auto pTimeout = std::make_shared<int>(-1);
    pCommand->add_option("FILE", *pFile, "the script; - for standard input")->required();
    pCommand->add_option("--timeout", *pTimeout, "milliseconds for each wait; -1: no limit")
        ->capture_default_str();
    pCommand->callback([options, pFile, pTimeout] {
        const std::string strScript = ReadInput(*pFile);
        CLinkSession session(*options);
        const std::string strReply = session.Run(strScript, *pTimeout);
        if (options->m_fJson) {
            session.Print("", json{{"printed", strReply}});
        } else {
            std::fputs(strReply.c_str(), stdout);
        }
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
    for (const auto add : {AddStatus, AddTracks, AddCapture, AddRender, AddExport, AddApt,
                           AddDoubler, AddClear, AddOffset, AddPrint, AddRun, AddWatch}) {
        add(*pLink, pOptions);
    }
}
