#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>

#include "host/RateNotices.h"
#include "host/ReferenceHost.h"
#include "host/SessionFile.h"
#include "host/SessionKeeper.h"
#include "host/SessionSummary.h"
#include "host/Timeline.h"
#include "tools/AboveZero.h"
#include "tools/HelpFormatter.h"
#include "tools/ToolFailure.h"

namespace {

constexpr std::chrono::milliseconds kSavePeriod{200};

constexpr char szStuck[] =
    "tavarin-host: a script keeps the interpreter busy with one step that nothing can stop; "
    "the host ends, with the session as that script left it\n";

volatile std::sig_atomic_t g_fStop = 0;

void Stop(int) {
    g_fStop = 1;
}

struct Arguments {
    int nId = 1;
    std::vector<std::string> tracks{"Guide", "Dub", "Out"};
    bool fNoSession = false;
    int nSampleRate = 48000;
    double dOffset = 0;
    std::string strSessionFile;
    std::string strTimelineFile;
    std::string strAudioDirectory;
    double dScriptSeconds = 10;
    bool fForce = false;
    bool fVerbose = false;
    bool fQuiet = false;
    std::vector<std::string> ownOptions;  ///< those given of which a session file has its own
};

void Declare(CLI::App& app, Arguments& arguments) {
    app.set_version_flag("--version", TAVARIN_VERSION);
    app.add_option("--id", arguments.nId, "host id")->check(AboveZero())->capture_default_str();
    app.add_option("--tracks", arguments.tracks, "names of the tracks of both documents")
        ->delimiter(',')
        ->capture_default_str();
    app.add_flag("--no-session", arguments.fNoSession, "run with no session selected");
    app.add_option("--sample-rate", arguments.nSampleRate, "the session's sample rate in Hz")
        ->capture_default_str();
    app.add_option("--smpte-offset", arguments.dOffset, "the session's link offset")
        ->capture_default_str();
    app.add_option("--session", arguments.strSessionFile,
                   "load the session from this file if it is there, and keep it saved in it");
    app.add_option("--audio", arguments.strAudioDirectory,
                   "directory for renders, exports and results (default: FILE.audio beside the "
                   "session file, or a private one that is removed at the end)");
    app.add_option("--timeline", arguments.strTimelineFile,
                   "keep a picture of the session in this SVG file");
    app.add_flag("--force", arguments.fForce, "replace the picture if it is there");
    app.add_option("--script-time", arguments.dScriptSeconds,
                   "how many seconds a script may run, work of the host not counted")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
    app.add_flag("--verbose", arguments.fVerbose, "show each script and its reply");
    app.add_flag("--quiet", arguments.fQuiet, "show errors only")->excludes("--verbose");
}

void Tell(std::string const& strText) {
    std::fprintf(stderr, "tavarin-host: %s\n", strText.c_str());
}

// A host that made the directory would keep the session where nobody looks for it.
void RequireDirectoryOf(std::string const& strFile) {
    const std::filesystem::path directory = std::filesystem::path(strFile).parent_path();
    if (directory.empty() || std::filesystem::is_directory(directory)) return;
    throw CSessionFileError("cannot save the session \"" + strFile + "\": the directory \"" +
                            directory.string() + "\" is not there");
}

void TellMissingAudio(CSession const& session) {
    for (DocumentKind kind : kDocumentKinds)
        for (CTrack const& track : session.Document(kind).m_Tracks)
            for (CRegion const& region : track.m_Regions) {
                std::error_code none;
                if (std::filesystem::exists(region.m_strFile, none)) continue;
                Tell("the audio file \"" + region.m_strFile + "\" of a region on track \"" +
                     track.m_strName + "\" is missing");
            }
}

CSession MakeSession(Arguments const& arguments) {
    if (!arguments.strSessionFile.empty()) RequireDirectoryOf(arguments.strSessionFile);
    const bool fLoad =
        !arguments.strSessionFile.empty() && std::filesystem::exists(arguments.strSessionFile);
    CSession session = fLoad ? LoadSession(arguments.strSessionFile)
                             : CSession(arguments.tracks, arguments.nSampleRate);
    if (!fLoad) session.SetLinkSMPTEOffset(arguments.dOffset);
    session.SetSelected(!arguments.fNoSession);
    if (!fLoad) return session;
    for (std::string const& strOption : arguments.ownOptions)
        Tell(strOption + " is not used: \"" + arguments.strSessionFile + "\" has its own");
    TellMissingAudio(session);
    return session;
}

void ShowExchange(CHostExchange const& exchange) {
    std::printf("--- script (%lld us)\n%s", static_cast<long long>(exchange.m_Duration.count()),
                exchange.m_strScript.c_str());
    if (!exchange.m_strScript.ends_with('\n')) std::printf("\n");
    std::printf("--- reply\n%s", exchange.m_Result.strPrinted.c_str());
    if (!exchange.m_Result.strError.empty()) {
        std::printf("--- error\n%s\n", exchange.m_Result.strError.c_str());
    }
    std::fflush(stdout);
}

void ShowWork(std::string const& strText) {
    std::printf("tavarin-host: %s\n", strText.c_str());
    std::fflush(stdout);
}

CReferenceHostOptions MakeOptions(Arguments const& arguments,
                                  std::shared_ptr<const CHostLock> pLock) {
    CReferenceHostOptions options;
    options.m_pLock = std::move(pLock);
    options.m_nId = arguments.nId;
    options.m_Engine.m_strAudioDirectory = arguments.strAudioDirectory;
    if (arguments.strAudioDirectory.empty() && !arguments.strSessionFile.empty()) {
        options.m_Engine.m_strAudioDirectory = arguments.strSessionFile + ".audio";
    }
    options.m_Engine.m_Limits.m_Time =
        std::chrono::milliseconds(std::llround(arguments.dScriptSeconds * 1000));
    if (!arguments.fQuiet) options.m_Engine.m_WorkListener = ShowWork;
    if (arguments.fVerbose) options.m_Observer = ShowExchange;
    return options;
}

void Announce(Arguments const& arguments, CReferenceHost const& host) {
    if (arguments.fQuiet) return;
    const CSession session = host.Snapshot();
    const std::size_t nTracks = session.Document(DocumentKind::Script).m_Tracks.size();
    std::printf("tavarin-host: host %d is ready, %s, %zu tracks, %d Hz, audio in %s\n",
                arguments.nId, session.Selected() ? "session selected" : "no session selected",
                nTracks, session.SampleRate(), host.AudioDirectory().c_str());
    std::fflush(stdout);
}

// A file that somebody else has made would be lost with the first picture.
void RequireRoomForPicture(Arguments const& arguments) {
    std::error_code none;
    const bool fThere = std::filesystem::is_regular_file(arguments.strTimelineFile, none);
    if (!fThere || arguments.fForce) return;
    throw CSessionFileError("\"" + arguments.strTimelineFile +
                            "\" is there already; say --force to replace it");
}

CSessionKeeper MakeKeeper(Arguments const& arguments) {
    CSessionKeeper keeper;
    if (!arguments.strSessionFile.empty()) keeper.Add(arguments.strSessionFile, SaveSession);
    if (!arguments.strTimelineFile.empty()) {
        keeper.Add(arguments.strTimelineFile,
                   [pPeaks = std::make_shared<CPeakCache>()](CSession const& session,
                                                             std::string const& strPath) {
                       WriteTimeline(session, *pPeaks, strPath);
                   });
    }
    return keeper;
}

// A closed terminal ends the host as an interruption does, unless it was started to outlive it. A
// closed pipe ends only what was written into it.
void PrepareSignals() {
    std::signal(SIGINT, Stop);
    std::signal(SIGTERM, Stop);
    if (std::signal(SIGHUP, Stop) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

int RunHost(Arguments const& arguments) {
    PrepareSignals();
    RequireRoomForPicture(arguments);
    // Held from before the session is loaded until it is saved for the last time, so that no two
    // hosts have the same one.
    const auto pLock = std::make_shared<CHostLock>();
    CReferenceHost host(MakeSession(arguments), MakeOptions(arguments, pLock));
    CSessionKeeper keeper = MakeKeeper(arguments);
    keeper.Begin(host);
    Announce(arguments, host);
    CRateNotices rates;
    while (!g_fStop && !host.IsStuck()) {
        rates.KeepUp(host);
        std::this_thread::sleep_for(kSavePeriod);
        keeper.KeepUp(host);
    }
    // What is still being answered belongs into the files too.
    const bool fClosed = host.Close();
    if (!fClosed) std::fputs(szStuck, stderr);
    rates.KeepUp(host);
    const bool fAllKept = keeper.End(host);
    if (!fClosed) host.Abandon(exitNegative);
    if (!arguments.fQuiet) std::fputs(DescribeSession(host.Snapshot()).c_str(), stdout);
    return fAllKept ? exitDone : exitNegative;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{
        "A reference host for the Tavarin Pro link: it runs the link's scripts on real audio, for "
        "development, demonstrations and tests. It stands in for the host application and is not "
        "it. It runs until it is interrupted, and then says what it holds."};
    app.name("tavarin-host");
    app.formatter(std::make_shared<CHelpFormatter>());
    Arguments arguments;
    Declare(app, arguments);
    try {
        app.parse(argc, argv);
        for (const char* szOption : {"--tracks", "--sample-rate", "--smpte-offset"})
            if (app.count(szOption) > 0) arguments.ownOptions.emplace_back(szOption);
        return RunHost(arguments);
    } catch (CLI::ParseError const& usage) {
        return app.exit(usage) == 0 ? exitDone : exitTrouble;
    } catch (CHostSegmentError const& refusal) {
        Tell(refusal.what());
        return exitNegative;
    } catch (std::exception const& failure) {
        Tell(failure.what());
        return exitTrouble;
    }
}
