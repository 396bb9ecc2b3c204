#include "tools/LinkWatch.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

namespace {

constexpr int kTrackListTimeoutMs = 1000;
constexpr std::chrono::milliseconds kPeriod{200};

volatile std::sig_atomic_t g_fInterrupted = 0;

void Interrupt(int) {
    g_fInterrupted = 1;
}

// What is shown; two equal views are shown once.
struct LinkView {
    int nHost = -1;
    std::string strError;
    std::string strAdvice;
    std::vector<std::string> tracks;

    bool operator==(LinkView const&) const = default;
};

LinkView Look(CTANClientInterProcess& client, bool fAudioSuite) {
    LinkView view;
    view.nHost = client.GetCurrentTANHost();
    if (view.nHost > 0) {
        client.ListTracksWithTimeout(fAudioSuite, &view.tracks, kTrackListTimeoutMs);
    }
    view.strError = client.m_strLastError;
    view.strAdvice = client.m_strAdvice;
    return view;
}

void ShowText(LinkView const& view) {
    if (view.nHost > 0) std::printf("Host %d, session selected\n", view.nHost);
    if (!view.strError.empty()) std::printf("%s\n", view.strError.c_str());
    if (!view.strAdvice.empty()) std::printf("%s\n", view.strAdvice.c_str());
    for (std::size_t nTrack = 0; nTrack < view.tracks.size(); ++nTrack) {
        std::printf("  %2zu  %s\n", nTrack, view.tracks[nTrack].c_str());
    }
}

void ShowJson(LinkView const& view) {
    const nlohmann::json json{{"host", view.nHost},
                              {"error", view.strError},
                              {"advice", view.strAdvice},
                              {"tracks", view.tracks}};
    std::printf("%s\n",
                json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

}  // namespace

void WatchLink(CLinkOptions const& options) {
    std::signal(SIGINT, Interrupt);
    std::signal(SIGTERM, Interrupt);
    CTANClientInterProcess client;
    LinkView shown;
    bool fShownOnce = false;
    while (!g_fInterrupted) {
        const int nHost = client.GetCurrentIdFromMainDirectory();
        if (!fShownOnce || client.NeedsUpdate() || nHost != shown.nHost) {
            LinkView view = Look(client, options.m_fAudioSuite);
            if (!fShownOnce || view != shown) {
                (options.m_fJson ? ShowJson : ShowText)(view);
                std::fflush(stdout);
            }
            shown = std::move(view);
            fShownOnce = true;
        }
        std::this_thread::sleep_for(kPeriod);
    }
}
