// The Doubler Link view against a peer host, through the bundle's own selectors.

#import "ViewFixture.h"

namespace {

using Strings = std::vector<std::string>;

class DoublerLinkView : public CViewTest {};

TEST_F(DoublerLinkView, AwakesWithNoCaptureAndAsksNothing) {
    CViewHost host;
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    EXPECT_TRUE(view->m_fAudioSuite);
    EXPECT_EQ(view->m_lInputStart, -1);
    EXPECT_EQ(view->m_lInputEnd, -1);
    EXPECT_EQ(view->m_nCurrentHost, 0);
    EXPECT_EQ(host.Asked(), Strings{});
}

TEST_F(DoublerLinkView, CaptureBecomesAProcessOverItsExtent) {
    CViewHost host;
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    EXPECT_EQ(Capture(view, "/a/take.wav", 1000.5, 10.6, 48000.9), 0);
    EXPECT_EQ(host.Asked(), (Strings{"AS clear 0", "AS duplicate 0 /a/take.wav 1000,10,48000",
                                     "AS add 0 /a/take.wav 1000,10,48000", "AS clear 1",
                                     "AS doubler 0 1011..49001 > 1"}));
    EXPECT_EQ(view->m_lInputStart, 1011);
    EXPECT_EQ(view->m_lInputEnd, 49001);
}

TEST_F(DoublerLinkView, DuplicateAsTheFirstCaptureCreatesNothing) {
    CViewHost host;
    host.SetDuplicate(true);
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    const std::string strTake = MakeTake();
    Capture(view, strTake);
    EXPECT_EQ(host.Asked(),
              (Strings{"AS clear 0", "AS duplicate 0 " + strTake + " 1000,0,48000", "AS clear 1"}));
    EXPECT_FALSE(m_directory.Has("take.wav"));
    EXPECT_EQ(view->m_lInputStart, -1);
    // Emptying the output track after the check has reset the client's texts.
    EXPECT_EQ(Text(view->m_textLastError), view->m_Script.m_strLastError);
    EXPECT_EQ(Text(view->m_textLastError), "");
}

TEST_F(DoublerLinkView, DuplicateAfterACaptureDoublesTheEarlierExtent) {
    CViewHost host;
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    Capture(view, "/a/take.wav", 100, 0, 50);
    host.Asked();
    host.SetDuplicate(true);
    Capture(view, MakeTake(), 7000, 0, 50);
    const Strings asked = host.Asked();
    ASSERT_EQ(asked.size(), 4u);
    EXPECT_EQ(asked[2], "AS clear 1");
    EXPECT_EQ(asked[3], "AS doubler 0 100..150 > 1");
    EXPECT_FALSE(m_directory.Has("take.wav"));
}

TEST_F(DoublerLinkView, NotificationsRefreshTheTexts) {
    CViewHost host;
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    EXPECT_FALSE(Export(view));
    EXPECT_EQ(Text(view->m_textLastError), "No Tavarin Pro region is selected");
    EXPECT_FALSE([view->m_textLastError isHidden]);
    EXPECT_TRUE([view->m_imageLogo isHidden]);

    host.SetRender("4\n0\n48000\n100\n200\n");
    paramRenderSelectedRegion render{48000, 0, 0, false};
    Notify(view, notifyRenderSelectedRegion, render);
    EXPECT_TRUE(render.fResult);
    EXPECT_TRUE([view->m_textLastError isHidden]);
    EXPECT_TRUE([view->m_textAdvice isHidden]);
    EXPECT_FALSE([view->m_imageLogo isHidden]);

    host.SetError("oops");
    paramUpdateCount count{};
    Notify(view, notifyUpdateCount, count);
    EXPECT_EQ(Text(view->m_textLastError), "oops");
    host.SetError("");
    [view NotificationReceived:notifyPrint Data:"hello" DataSize:6];
    EXPECT_EQ(Text(view->m_textLastError), "oops") << "a print refreshes nothing";
    EXPECT_EQ([view NotificationReceived:1 Data:nullptr DataSize:0], 0);
    EXPECT_EQ(host.Asked(),
              (Strings{"AS export", "AS render", "print(GetUpdateCount())\n", "print(\"hello\")"}));
}

TEST_F(DoublerLinkView, FirstCheckWithoutASessionDoesNotRefresh) {
    CViewHost host;
    host.SetCurrentHost(0);
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    [view CheckHost];
    EXPECT_EQ(Text(view->m_textLastError), "");
    EXPECT_FALSE([view->m_imageLogo isHidden]);
}

TEST_F(DoublerLinkView, PathWithoutAnEndIsRefusedAndSaidSo) {
    CViewHost host;
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    paramPostAnalyze capture = MakeCapture(std::string(kRecordPathSize, 'x'));
    EXPECT_EQ(Notify(view, notifyPostAnalyze, capture), 0);
    EXPECT_EQ(host.Asked(), Strings{});
    EXPECT_EQ(Text(view->m_textLastError), "Error - The path of the captured file is too long.");
    EXPECT_FALSE([view->m_textLastError isHidden]);
    EXPECT_TRUE([view->m_imageLogo isHidden]);
}

}  // namespace
