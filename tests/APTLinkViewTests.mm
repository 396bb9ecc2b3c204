// The APT Link view against a peer host, through the bundle's own selectors.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#import "ViewFixture.h"

namespace {

using Strings = std::vector<std::string>;

NSUserDefaults* Defaults() {
    return [NSUserDefaults standardUserDefaults];
}

void Store(id value) {
    NSDictionary* values = value == nil
                               ? [NSDictionary dictionary]
                               : [NSDictionary dictionaryWithObject:value forKey:@"AutoSwitch"];
    [Defaults() setPersistentDomain:values forName:@TAVARIN_BUNDLE_IDENTIFIER];
}

id Stored() {
    return [[Defaults() persistentDomainForName:@TAVARIN_BUNDLE_IDENTIFIER]
        objectForKey:@"AutoSwitch"];
}

class APTLinkView : public CViewTest {
protected:
    void SetUp() override {
        CViewTest::SetUp();
        Store(nil);
    }

    TavarinProAPTLink_ViewController* MakeWithSwitch(bool fOn) {
        Store(fOn ? @"1" : @"0");
        return MakeAPT();
    }
};

void ExpectButtons(TavarinProAPTLink_ViewController* view, bool fGuide, bool fSwitch) {
    EXPECT_EQ(view->m_fGuideSelected, fGuide);
    EXPECT_EQ(view->m_fAutoSwitch, fSwitch);
    EXPECT_EQ([view->m_btnGuide state], fGuide ? 1 : 0);
    EXPECT_EQ([view->m_btnDub state], fGuide ? 0 : 1);
    EXPECT_EQ([view->m_btnAutoTrackSwitch state], fSwitch ? 1 : 0);
}

void ExpectTexts(TavarinProAPTLink_ViewController* view, std::string const& strError,
                 std::string const& strAdvice) {
    EXPECT_EQ(Text(view->m_textLastError), strError);
    EXPECT_EQ(Text(view->m_textAdvice), strAdvice);
    const bool fNothing = strError.empty() && strAdvice.empty();
    EXPECT_EQ([view->m_textLastError isHidden], fNothing);
    EXPECT_EQ([view->m_textAdvice isHidden], fNothing);
    EXPECT_EQ([view->m_imageLogo isHidden], !fNothing);
}

TEST_F(APTLinkView, AwakesWithTheGuideSelectedAndAsksNothing) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeAPT();
    ExpectButtons(view, true, false);
    EXPECT_TRUE(view->m_fAudioSuite);
    EXPECT_EQ(view->m_lGuideStart, -1);
    EXPECT_EQ(view->m_lGuideEnd, -1);
    EXPECT_EQ(view->m_lDubStart, -1);
    EXPECT_EQ(view->m_lDubEnd, -1);
    EXPECT_EQ(view->m_nCurrentHost, 0);
    EXPECT_EQ(host.Asked(), Strings{});
}

TEST_F(APTLinkView, AutomaticSwitchRunsAWholeCycle) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeWithSwitch(true);
    Capture(view, "/a/guide.wav", 1000, 0, 48000);
    ExpectButtons(view, false, true);
    EXPECT_EQ(host.Asked(), (Strings{"AS clear 0", "AS duplicate 0 /a/guide.wav 1000,0,48000",
                                     "AS add 0 /a/guide.wav 1000,0,48000"}));
    Capture(view, "/a/dub.wav", 2000, 10, 40000);
    ExpectButtons(view, false, true);
    EXPECT_EQ(host.Asked(), (Strings{"AS clear 1", "AS duplicate 1 /a/dub.wav 2000,10,40000",
                                     "AS add 1 /a/dub.wav 2000,10,40000", "AS clear 2",
                                     "AS apt 0 1000..49000 1 2010..42000 > 2"}));
    host.SetExport("2\n0\n/aligned.wav\n");
    EXPECT_TRUE(Export(view));
    ExpectButtons(view, true, true);
    EXPECT_EQ(host.Asked(), Strings{"AS export"});
}

TEST_F(APTLinkView, WithoutTheSwitchCapturesStayOnTheirTrack) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeWithSwitch(false);
    Capture(view, "/a/guide.wav");
    Capture(view, "/a/guide2.wav", 5000, 0, 10);
    ExpectButtons(view, true, false);
    EXPECT_EQ(view->m_lGuideStart, 5000);
    EXPECT_EQ(view->m_lGuideEnd, 5010);
    [view OnDub:nil];
    Capture(view, "/a/dub.wav", 7000, 0, 20);
    host.Asked();
    Capture(view, "/a/dub2.wav", 8000, 0, 20);
    EXPECT_EQ(host.Asked(), (Strings{"AS clear 1", "AS duplicate 1 /a/dub2.wav 8000,0,20",
                                     "AS add 1 /a/dub2.wav 8000,0,20", "AS clear 2",
                                     "AS apt 0 5000..5010 1 8000..8020 > 2"}));
    ExpectButtons(view, false, false);
    host.SetExport("2\n0\n/aligned.wav\n");
    Export(view);
    ExpectButtons(view, false, false);
}

TEST_F(APTLinkView, DubBeforeAnyGuideClearsTwoTracksAndCreatesNothing) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeAPT();
    [view OnDub:nil];
    Capture(view, "/a/dub.wav");
    EXPECT_EQ(host.Asked(), (Strings{"AS clear 1", "AS duplicate 1 /a/dub.wav 1000,0,48000",
                                     "AS add 1 /a/dub.wav 1000,0,48000", "AS clear 2"}));
    EXPECT_EQ(view->m_lDubStart, 1000);
    EXPECT_EQ(view->m_lGuideStart, -1);
}

TEST_F(APTLinkView, ExtentsAreTruncatedTowardZero) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeAPT();
    Capture(view, "/a/guide.wav", 1000.0, 0.0, 48000.9);
    EXPECT_EQ(view->m_lGuideStart, 1000);
    EXPECT_EQ(view->m_lGuideEnd, 49000);
    Capture(view, "/a/guide.wav", -10.5, 0.9, 10.0);
    EXPECT_EQ(view->m_lGuideStart, -9);
    EXPECT_EQ(view->m_lGuideEnd, 0);
    Capture(view, "/a/guide.wav", 1e300, NAN, 1e300);
    EXPECT_EQ(view->m_lGuideStart, 0);
    EXPECT_EQ(view->m_lGuideEnd, INT64_MAX);
}

TEST_F(APTLinkView, DuplicateGuideIsDeletedAndStillSwitches) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeWithSwitch(true);
    host.SetDuplicate(true);
    const std::string strTake = MakeTake();
    Capture(view, strTake);
    EXPECT_FALSE(m_directory.Has("take.wav"));
    EXPECT_EQ(host.Asked(), (Strings{"AS clear 0", "AS duplicate 0 " + strTake + " 1000,0,48000"}));
    ExpectButtons(view, false, true);
    EXPECT_EQ(view->m_lGuideStart, -1);
    ExpectTexts(view, "Same audio captured previously.", "This capture has been cancelled");
}

TEST_F(APTLinkView, DuplicateDubCreatesTheProcessFromTheEarlierTake) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeAPT();
    Capture(view, "/a/guide.wav", 0, 0, 100);
    [view OnDub:nil];
    Capture(view, "/a/dub.wav", 50, 0, 100);
    host.Asked();
    host.SetDuplicate(true);
    Capture(view, MakeTake(), 9000, 0, 100);
    const Strings asked = host.Asked();
    ASSERT_EQ(asked.size(), 4u);
    EXPECT_EQ(asked[2], "AS clear 2");
    EXPECT_EQ(asked[3], "AS apt 0 0..100 1 50..150 > 2");
    EXPECT_FALSE(m_directory.Has("take.wav"));
    EXPECT_EQ(view->m_lDubStart, 50);
    // The commands after the check have reset the client's texts.
    ExpectTexts(view, "", "");
}

TEST_F(APTLinkView, ExportSwitchesBackWhateverItsResult) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeWithSwitch(true);
    [view OnDub:nil];
    EXPECT_FALSE(Export(view));
    ExpectButtons(view, true, true);
    ExpectTexts(view, "No Tavarin Pro region is selected", "");
    EXPECT_FALSE(Export(view));
    ExpectButtons(view, true, true);
}

TEST_F(APTLinkView, ButtonsChooseTheNextTake) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    [view OnDub:nil];
    ExpectButtons(view, false, false);
    [view OnDub:nil];
    ExpectButtons(view, false, false);
    [view OnGuide:nil];
    ExpectButtons(view, true, false);
}

TEST_F(APTLinkView, SwitchIsInvertedAndStoredAsText) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    [view->m_btnAutoTrackSwitch setState:1];
    [view OnAutoTrackSwitch:view->m_btnAutoTrackSwitch];
    ExpectButtons(view, true, true);
    EXPECT_TRUE([Stored() isKindOfClass:[NSString class]]);
    EXPECT_TRUE([Stored() isEqual:@"1"]);
    ExpectButtons(MakeAPT(), true, true);
    [view OnAutoTrackSwitch:nil];
    ExpectButtons(view, true, false);
    EXPECT_TRUE([Stored() isEqual:@"0"]);
}

TEST_F(APTLinkView, StoredPreferenceIsClamped) {
    struct CCase {
        id value;
        bool fOn;
    };
    const CCase cases[] = {{@"5", true},
                           {@"-3", false},
                           {@"1", true},
                           {@"0", false},
                           {@"yes", false},
                           {@"", false},
                           {nil, false},
                           {[NSNumber numberWithInt:1], true},
                           {[NSArray arrayWithObject:@"1"], false}};
    for (CCase const& one : cases) {
        Store(one.value);
        EXPECT_EQ(MakeAPT()->m_fAutoSwitch, one.fOn) << [[one.value description] UTF8String];
    }
}

TEST_F(APTLinkView, StoringKeepsOtherPreferences) {
    [Defaults() setPersistentDomain:[NSDictionary dictionaryWithObject:@"kept" forKey:@"Other"]
                            forName:@TAVARIN_BUNDLE_IDENTIFIER];
    [MakeAPT() OnAutoTrackSwitch:nil];
    NSDictionary* stored = [Defaults() persistentDomainForName:@TAVARIN_BUNDLE_IDENTIFIER];
    EXPECT_TRUE([[stored objectForKey:@"Other"] isEqual:@"kept"]);
    EXPECT_TRUE([[stored objectForKey:@"AutoSwitch"] isEqual:@"1"]);
}

// What is on disk, whatever this process has in mind.
std::string OnDisk() {
    std::string strAll;
    for (auto const& file : std::filesystem::directory_iterator(getenv("TAVARIN_TEST_DEFAULTS"))) {
        if (!file.is_regular_file()) continue;
        std::ifstream stream(file.path());
        strAll += std::string(std::istreambuf_iterator<char>(stream), {});
    }
    const auto nKey = strAll.find("AutoSwitch");
    return nKey == std::string::npos ? ""
                                     : strAll.substr(nKey, strAll.find("</string>", nKey) - nKey);
}

TEST_F(APTLinkView, SwitchIsOnDiskWhenTheWindowHasClosed) {
    [Defaults() synchronize];
    TavarinProAPTLink_ViewController* view = MakeAPT();
    NSWindow* window = Show(view);
    [view OnAutoTrackSwitch:nil];
    ASSERT_EQ(OnDisk(), "") << "not at once";
    [window close];
    EXPECT_TRUE(OnDisk().ends_with("1")) << OnDisk();
}

TEST_F(APTLinkView, SwitchIsOnDiskWhenTheViewHasLeftItsWindow) {
    [Defaults() synchronize];
    TavarinProAPTLink_ViewController* view = MakeAPT();
    NSWindow* window = Show(view);
    [view OnAutoTrackSwitch:nil];
    [window setContentView:[[[NSView alloc] initWithFrame:NSZeroRect] autorelease]];
    EXPECT_TRUE(OnDisk().ends_with("1")) << OnDisk();
}

TEST_F(APTLinkView, TextsHideWhenThereIsNothingToSay) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    view->m_Script.m_strLastError = "error";
    [view SetTextFields];
    ExpectTexts(view, "error", "");
    view->m_Script.m_strLastError = "";
    view->m_Script.m_strAdvice = "advice";
    [view SetTextFields];
    ExpectTexts(view, "", "advice");
    view->m_Script.m_strAdvice = "";
    [view SetTextFields];
    ExpectTexts(view, "", "");
}

TEST_F(APTLinkView, FirstCheckWithoutASessionDoesNotRefresh) {
    CViewHost host;
    host.SetCurrentHost(0);
    TavarinProAPTLink_ViewController* view = MakeAPT();
    [view CheckHost];
    EXPECT_EQ(Text(view->m_textLastError), "");
    EXPECT_FALSE([view->m_imageLogo isHidden]);
    host.SetCurrentHost(3);
    [view CheckHost];
    host.SetCurrentHost(0);
    [view CheckHost];
    ExpectTexts(view, "No Tavarin Pro session has been selected.", "");
}

TEST_F(APTLinkView, MissingHostShowsAtTheFirstCheck) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    [view CheckHost];
    EXPECT_EQ(view->m_nCurrentHost, -1);
    ExpectTexts(view, "Error - Tavarin Pro is not running.", "Locate and launch Tavarin Pro.");
}

TEST_F(APTLinkView, CaptureWithoutAHostShowsWhy) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    Capture(view, MakeTake());
    ExpectTexts(view, "Error - Tavarin Pro is not running.", "Locate and launch Tavarin Pro.");
    EXPECT_TRUE(m_directory.Has("take.wav"));
}

TEST_F(APTLinkView, RenderAndUpdateCountRefreshTheTextsAndPrintDoesNot) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeAPT();
    host.SetRender("4\n0\n48000\n100\n200\n");
    paramRenderSelectedRegion render{44100, 0, 0, false};
    Notify(view, notifyRenderSelectedRegion, render);
    EXPECT_TRUE(render.fResult);
    ExpectTexts(view, "Warning - Session Sample Rate is: 44100 Tavarin Pro Sample rate is: 48000",
                "");
    [view NotificationReceived:notifyPrint Data:"hello" DataSize:6];
    EXPECT_NE(Text(view->m_textLastError), "");
    paramUpdateCount count{};
    host.SetUpdateCount("12\n");
    Notify(view, notifyUpdateCount, count);
    EXPECT_EQ(count.lUpdateCount, 12);
    ExpectTexts(view, "", "");
    EXPECT_EQ(host.Asked(),
              (Strings{"AS render", "print(\"hello\")", "print(GetUpdateCount())\n"}));
}

TEST_F(APTLinkView, UnknownIdDoesNotRefresh) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeAPT();
    [view->m_textLastError setStringValue:@"marked"];
    EXPECT_EQ([view NotificationReceived:0x12345678 Data:nullptr DataSize:0], 0);
    EXPECT_EQ(Text(view->m_textLastError), "marked");
    EXPECT_EQ(host.Asked(), Strings{});
}

TEST_F(APTLinkView, PathWithoutAnEndIsRefusedAndSaidSo) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeWithSwitch(true);
    paramPostAnalyze capture = MakeCapture(std::string(kRecordPathSize, 'x'));
    EXPECT_EQ(Notify(view, notifyPostAnalyze, capture), 0);
    EXPECT_EQ(host.Asked(), Strings{});
    EXPECT_EQ(Text(view->m_textLastError), "Error - The path of the captured file is too long.");
    EXPECT_FALSE([view->m_textLastError isHidden]);
    EXPECT_TRUE([view->m_imageLogo isHidden]);
    ExpectButtons(view, true, true);
}

TEST_F(APTLinkView, CreatingByHandClearsTheOutputFirst) {
    CViewHost host;
    TavarinProAPTLink_ViewController* view = MakeAPT();
    [view CreateAPT];
    EXPECT_EQ(host.Asked(), Strings{"AS clear 2"});
}

}  // namespace
