#include "tools/LinkWatch.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "tools/LinkMonitor.h"
#include "tools/LinkScreen.h"

namespace {

constexpr std::chrono::milliseconds kPeriod{200};
constexpr int kLooksPerQuestion = 5;
constexpr std::size_t kUsualColumns = 80;
constexpr std::size_t kUsualRows = 24;

volatile std::sig_atomic_t g_fInterrupted = 0;

void Interrupt(int) {
    g_fInterrupted = 1;
}

// What is new to who reads along.
struct CNews {
    LinkView const* pView = nullptr;  // none: as it was
    std::vector<std::string> events;
};

void ShowText(CNews const& news) {
    if (news.pView) {
        LinkView const& view = *news.pView;
        if (view.nHost > 0) std::printf("Host %d, session selected\n", view.nHost);
        if (!view.strError.empty()) std::printf("%s\n", view.strError.c_str());
        if (!view.strAdvice.empty()) std::printf("%s\n", view.strAdvice.c_str());
        for (std::size_t nTrack = 0; nTrack < view.tracks.size(); ++nTrack)
            std::printf("  %2zu  %s\n", nTrack, view.tracks[nTrack].c_str());
    }
    for (std::string const& strEvent : news.events) std::printf("%s\n", strEvent.c_str());
}

void ShowJson(CNews const& news) {
    nlohmann::json json{{"events", news.events}};
    if (news.pView)
        json.update({{"host", news.pView->nHost},
                     {"error", news.pView->strError},
                     {"advice", news.pView->strAdvice},
                     {"tracks", news.pView->tracks}});
    std::printf("%s\n",
                json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

// Takes the terminal's second screen and gives the first one back, with its cursor.
class CLiveScreen {
public:
    CLiveScreen() { std::fputs("\x1b[?1049h\x1b[?25l", stdout); }
    ~CLiveScreen() {
        std::fputs("\x1b[?25h\x1b[?1049l", stdout);
        std::fflush(stdout);
    }
    CLiveScreen(CLiveScreen const&) = delete;
    CLiveScreen& operator=(CLiveScreen const&) = delete;

    static void Draw(CLinkMonitor const& monitor) {
        winsize size{};
        const bool fKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
        std::fputs("\x1b[H", stdout);
        for (std::string const& strLine :
             DrawLinkScreen(monitor, fKnown ? size.ws_col : kUsualColumns,
                            (fKnown ? size.ws_row : kUsualRows) - 1U)) {
            std::printf("%s\x1b[K\r\n", strLine.c_str());
        }
        std::fputs("\x1b[J", stdout);
        std::fflush(stdout);
    }
};

void WatchLive(CLinkMonitor& monitor) {
    const CLiveScreen screen;
    for (int nLook = 0; !g_fInterrupted; ++nLook) {
        monitor.Look();
        if (nLook % kLooksPerQuestion == 0) monitor.Ask();
        CLiveScreen::Draw(monitor);
        std::this_thread::sleep_for(kPeriod);
    }
}

void WatchPlainly(CLinkMonitor& monitor, void (*show)(CNews const&)) {
    for (int nLook = 0; !g_fInterrupted; ++nLook) {
        CNews news;
        if (monitor.Look()) news.pView = &monitor.View();
        if (nLook % kLooksPerQuestion == 0 && monitor.Ask())
            news.events.assign(
                monitor.Events().end() - static_cast<std::ptrdiff_t>(monitor.NewEvents()),
                monitor.Events().end());
        if (news.pView || !news.events.empty()) {
            show(news);
            std::fflush(stdout);
        }
        std::this_thread::sleep_for(kPeriod);
    }
}

}  // namespace

void WatchLink(CLinkOptions const& options) {
    std::signal(SIGINT, Interrupt);
    std::signal(SIGTERM, Interrupt);
    CLinkMonitor monitor(options.m_fAudioSuite);
    if (options.m_fJson) {
        WatchPlainly(monitor, ShowJson);
    } else if (isatty(STDOUT_FILENO)) {
        WatchLive(monitor);
    } else {
        WatchPlainly(monitor, ShowText);
    }
}
