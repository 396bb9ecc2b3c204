// Open views while a real host starts, stops, is killed and starts again.

#include <optional>

#include "ChildProcess.h"
#import "ViewFixture.h"

namespace {

using Strings = std::vector<std::string>;

constexpr char szNotRunning[] = "Error - Tavarin Pro is not running.";

class HostRestart : public CViewTest {
protected:
    void StartHost(std::string const& strTracks) {
        m_host.emplace(Strings{TAVARIN_HOST_PROGRAM, "--quiet", "--tracks", strTracks},
                       m_directory.File("host.out"), m_directory.File("host.err"));
    }
    // A host that starts again removes what a killed one left, and one that is told to stop removes
    // its own.
    void TearDown() override {
        if (!m_host) StartHost("Guide");
        StopHost(SIGTERM);
        CViewTest::TearDown();
    }
    void StopHost(int nSignal) {
        m_host->Signal(nSignal);
        m_host->Wait();
        m_host.reset();
    }

    // Calls CheckHost, as a plug-in does, until the view shows this text.
    template <typename View>
    static bool Shows(View* view, std::string const& strText) {
        return WaitFor([view, &strText] {
            [view CheckHost];
            return Text(view->m_textLastError) == strText;
        });
    }

    std::optional<CChildProcess> m_host;
};

void Open(TavarinProLink_ViewController* view) {
    [view FillTrackList:nil];
}

TEST_F(HostRestart, LinkViewFollows) {
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    EXPECT_EQ(Text(view->m_textLastError), szNotRunning);
    for (const int nSignal : {SIGTERM, SIGKILL}) {
        StartHost("Guide,Dub,Out");
        ASSERT_TRUE(Shows(view, ""));
        Open(view);
        EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Guide", "Dub", "Out"}));
        StopHost(nSignal);
        ASSERT_TRUE(Shows(view, szNotRunning));
        Open(view);
        EXPECT_EQ(Titles(view->m_popupTracks), Strings{"No Track"});
    }
    StartHost("Solo");
    ASSERT_TRUE(Shows(view, ""));
    Open(view);
    EXPECT_EQ(Titles(view->m_popupTracks), Strings{"Solo"});
}

TEST_F(HostRestart, ViewsOfTwoKindsInOneProcessFollow) {
    TavarinProAPTLink_ViewController* apt = MakeAPT();
    TavarinProDoublerLink_ViewController* doubler = MakeDoubler();
    Show(apt);
    Show(doubler);
    ASSERT_TRUE(Shows(apt, szNotRunning));
    ASSERT_TRUE(Shows(doubler, szNotRunning));
    StartHost("Guide,Dub,Out");
    ASSERT_TRUE(Shows(apt, ""));
    ASSERT_TRUE(Shows(doubler, ""));
    EXPECT_FALSE([apt->m_imageLogo isHidden]);
    paramUpdateCount one{-7}, two{-7};
    Notify(apt, notifyUpdateCount, one);
    Notify(doubler, notifyUpdateCount, two);
    EXPECT_EQ(one.lUpdateCount, two.lUpdateCount);
    EXPECT_GE(one.lUpdateCount, 0);
    StopHost(SIGKILL);
    ASSERT_TRUE(Shows(apt, szNotRunning));
    ASSERT_TRUE(Shows(doubler, szNotRunning));
}

}  // namespace
