// The Link view against a peer host, through the bundle's own selectors.

#import "ViewFixture.h"

namespace {

using Strings = std::vector<std::string>;

constexpr char szNotRunning[] = "Error - Tavarin Pro is not running.";
constexpr char szLaunch[] = "Locate and launch Tavarin Pro.";
constexpr char szNoSession[] = "No Tavarin Pro session has been selected.";

void OpenPopUp(TavarinProLink_ViewController* view) {
    [[NSNotificationCenter defaultCenter] postNotificationName:NSPopUpButtonWillPopUpNotification
                                                        object:view->m_popupTracks];
}

class LinkView : public CViewTest {};

TEST_F(LinkView, AwakesInTheScriptDocumentWithNoHostSeen) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(view->m_nCurrentHost, -1);
    EXPECT_FALSE(view->m_fAudioSuite);
    EXPECT_EQ(host.Asked(), Strings{"S list"});
}

TEST_F(LinkView, FirstFillSelectsTheFirstTrack) {
    CViewHost host({"Vox", "Gtr"});
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Vox", "Gtr"}));
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
    EXPECT_EQ([view->m_popupTracks indexOfSelectedItem], 0);
    EXPECT_EQ([view->m_Tracks count], 2u);
    NSDictionary* second = [view->m_Tracks objectAtIndex:1];
    EXPECT_EQ([second count], 1u);
    EXPECT_STREQ([[second objectForKey:@"Name"] UTF8String], "Gtr");
    EXPECT_EQ(Text(view->m_textLastError), "");
}

TEST_F(LinkView, OpeningThePopUpFetchesTheListAndKeepsTheChoice) {
    CViewHost host({"Vox", "Gtr"});
    TavarinProLink_ViewController* view = MakeLink();
    [view->m_TracksArray setSelectionIndex:1];
    host.SetTracks({"Vox", "Gtr", "Keys"});
    host.Asked();
    OpenPopUp(view);
    EXPECT_EQ(host.Asked(), Strings{"S list"});
    EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Vox", "Gtr", "Keys"}));
    EXPECT_EQ(Selected(view->m_TracksArray), 1);
    EXPECT_EQ([view->m_popupTracks indexOfSelectedItem], 1);
}

TEST_F(LinkView, AnotherPopUpDoesNotFetchTheList) {
    CViewHost host;
    MakeLink();
    host.Asked();
    NSPopUpButton* other = [[[NSPopUpButton alloc] initWithFrame:NSMakeRect(0, 0, 100, 24)
                                                       pullsDown:NO] autorelease];
    [[NSNotificationCenter defaultCenter] postNotificationName:NSPopUpButtonWillPopUpNotification
                                                        object:other];
    EXPECT_EQ(host.Asked(), Strings{});
}

TEST_F(LinkView, ChoiceIsClampedWhenTheListShrinks) {
    CViewHost host({"Vox", "Gtr"});
    TavarinProLink_ViewController* view = MakeLink();
    [view->m_TracksArray setSelectionIndex:1];
    host.SetTracks({"Vox"});
    OpenPopUp(view);
    EXPECT_EQ(Titles(view->m_popupTracks), Strings{"Vox"});
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
}

TEST_F(LinkView, StoppedHostLeavesTheOneEntryNoTrack) {
    std::optional<CViewHost> host(std::in_place);
    TavarinProLink_ViewController* view = MakeLink();
    [view->m_TracksArray setSelectionIndex:1];
    host.reset();
    OpenPopUp(view);
    EXPECT_EQ(Titles(view->m_popupTracks), Strings{"No Track"});
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
    EXPECT_EQ(Text(view->m_textLastError), szNotRunning);
    EXPECT_EQ(Text(view->m_textAdvice), szLaunch);
}

TEST_F(LinkView, HostThatStartsFillsTheList) {
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(Titles(view->m_popupTracks), Strings{"No Track"});
    CViewHost host({"Vox", "Gtr"});
    OpenPopUp(view);
    EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Vox", "Gtr"}));
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
    EXPECT_EQ(Text(view->m_textLastError), "");
}

TEST_F(LinkView, UnselectedSessionAlsoLeavesNoTrack) {
    CViewHost host;
    host.SetCurrentHost(0);
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(Titles(view->m_popupTracks), Strings{"No Track"});
    EXPECT_EQ(Text(view->m_textLastError), szNoSession);
    EXPECT_EQ(Text(view->m_textAdvice), "");
}

TEST_F(LinkView, EmptyListLeavesNoSelection) {
    CViewHost host({"Vox", "Gtr"});
    TavarinProLink_ViewController* view = MakeLink();
    host.SetTracks({});
    OpenPopUp(view);
    EXPECT_EQ(Titles(view->m_popupTracks), Strings{});
    EXPECT_EQ([[view->m_TracksArray arrangedObjects] count], 0u);
    EXPECT_EQ(Selected(view->m_TracksArray), -1);
    EXPECT_EQ(Text(view->m_textLastError), szNoSession);
}

TEST_F(LinkView, ListAfterAnEmptyOneKeepsNoSelection) {
    CViewHost host(Strings{});
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(Selected(view->m_TracksArray), -1);
    host.SetTracks({"Vox", "Gtr"});
    OpenPopUp(view);
    EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Vox", "Gtr"}));
    EXPECT_EQ(Selected(view->m_TracksArray), -1);
}

TEST_F(LinkView, TracksOfOneNameAreSeparateEntries) {
    CViewHost host({"Vox", "Vox", "Gtr", "Vox"});
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Vox", "Vox", "Gtr", "Vox"}));
    [view->m_TracksArray setSelectionIndex:3];
    EXPECT_EQ([view->m_popupTracks indexOfSelectedItem], 3);
    Capture(view, "/a/x.wav");
    EXPECT_EQ(host.Asked(), (Strings{"S list", "S duplicate 3 /a/x.wav 1000,0,48000",
                                     "S add 3 /a/x.wav 1000,0,48000"}));
}

TEST_F(LinkView, TrackNamesOfAnyBytesAreShown) {
    CViewHost host({"Größe", "\xFF\xE9", "", "  "});
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Größe", "ÿé", "", "  "}));
}

TEST_F(LinkView, CaptureGoesToTheSelectedTrack) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    [view->m_TracksArray setSelectionIndex:1];
    host.Asked();
    const std::string strTake = MakeTake();
    EXPECT_EQ(Capture(view, strTake, 10.9, 0.5, -3.9), 0);
    EXPECT_EQ(host.Asked(), (Strings{"S duplicate 1 " + strTake + " 10,0,-3",
                                     "S add 1 " + strTake + " 10,0,-3"}));
    EXPECT_TRUE(m_directory.Has("take.wav"));
}

TEST_F(LinkView, CaptureWithTheNoTrackEntryGoesToTrackZero) {
    TavarinProLink_ViewController* view = MakeLink();
    CViewHost host;
    Capture(view, "/a/x.wav");
    EXPECT_EQ(host.Asked(),
              (Strings{"S duplicate 0 /a/x.wav 1000,0,48000", "S add 0 /a/x.wav 1000,0,48000"}));
}

TEST_F(LinkView, CaptureWithoutASelectionPassesMinusOne) {
    CViewHost host(Strings{});
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    Capture(view, "/a/x.wav");
    EXPECT_EQ(host.Asked(),
              (Strings{"S duplicate -1 /a/x.wav 1000,0,48000", "S add -1 /a/x.wav 1000,0,48000"}));
}

TEST_F(LinkView, DuplicateIsDeletedAndNotSent) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    host.SetDuplicate(true);
    const std::string strTake = MakeTake();
    Capture(view, strTake);
    EXPECT_EQ(host.Asked(), Strings{"S duplicate 0 " + strTake + " 1000,0,48000"});
    EXPECT_FALSE(m_directory.Has("take.wav"));
}

TEST_F(LinkView, TextsOfACaptureShowOnlyAtTheNextRefresh) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.SetDuplicate(true);
    Capture(view, MakeTake());
    EXPECT_EQ(Text(view->m_textLastError), "");
    [view SetTextFields];
    EXPECT_EQ(Text(view->m_textLastError), "Same audio captured previously.");
    EXPECT_EQ(Text(view->m_textAdvice), "This capture has been cancelled");
}

TEST_F(LinkView, CaptureWithoutAHostSendsNothingAndKeepsTheFile) {
    TavarinProLink_ViewController* view = MakeLink();
    EXPECT_EQ(Capture(view, MakeTake()), 0);
    EXPECT_TRUE(m_directory.Has("take.wav"));
}

TEST_F(LinkView, PathWithoutAnEndIsRefusedAndSaidSo) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    paramPostAnalyze capture = MakeCapture(std::string(kRecordPathSize, 'x'));
    EXPECT_EQ(Notify(view, notifyPostAnalyze, capture), 0);
    EXPECT_EQ(host.Asked(), Strings{});
    EXPECT_EQ(Text(view->m_textLastError), "Error - The path of the captured file is too long.");
    EXPECT_EQ(Text(view->m_textAdvice), "Use a folder with a shorter path.");
}

TEST_F(LinkView, LongestPathOfARecordArrives) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    const std::string strPath = "/a/" + std::string(kRecordPathSize - 4, 'x');
    Capture(view, strPath);
    EXPECT_EQ(host.Asked().at(1), "S add 0 " + strPath + " 1000,0,48000");
}

TEST_F(LinkView, ExportWritesPathAndResult) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    host.SetExport("2\n0\n/tmp/result.wav\n");
    paramExportSelectedRegion record{};
    record.nSampleRate = 44100;
    EXPECT_EQ(Notify(view, notifyExportSelectedRegion, record), 0);
    EXPECT_EQ(host.Asked(), Strings{"S export"});
    EXPECT_TRUE(record.fResult);
    EXPECT_STREQ(record.szFilePath, "/tmp/result.wav");
    EXPECT_EQ(record.nSampleRate, 44100);
}

TEST_F(LinkView, FailedExportLeavesThePath) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.SetExport("1\n1\n");
    paramExportSelectedRegion record{};
    record.fResult = true;
    std::strcpy(record.szFilePath, "as it was");
    Notify(view, notifyExportSelectedRegion, record);
    EXPECT_FALSE(record.fResult);
    EXPECT_STREQ(record.szFilePath, "as it was");
}

TEST_F(LinkView, ExportedPathThatDoesNotFitIsRefused) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    paramExportSelectedRegion record{};
    std::strcpy(record.szFilePath, "as it was");
    host.SetExport("2\n0\n/a/" + std::string(kRecordPathSize - 3, 'y') + "\n");
    Notify(view, notifyExportSelectedRegion, record);
    EXPECT_FALSE(record.fResult);
    EXPECT_STREQ(record.szFilePath, "as it was");
    EXPECT_EQ(Text(view->m_textLastError), "Error - The path of the exported file is too long.");

    const std::string strLongest = "/a/" + std::string(kRecordPathSize - 4, 'y');
    host.SetExport("2\n0\n" + strLongest + "\n");
    Notify(view, notifyExportSelectedRegion, record);
    EXPECT_TRUE(record.fResult);
    EXPECT_EQ(record.szFilePath, strLongest);
}

TEST_F(LinkView, ExportedFileThatNobodyWasToldOfIsRemoved) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    std::string strName;
    while (strName.size() < kRecordPathSize) strName += std::string(200, 'd') + "/";
    strName += "result.wav";
    host.SetExport("2\n0\n" + m_directory.Write(strName, "audio") + "\n");
    EXPECT_FALSE(Export(view));
    EXPECT_FALSE(m_directory.Has(strName));
}

TEST_F(LinkView, RenderWritesExtentAndResult) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    host.SetRender("4\n0\n48000\n100\n200\n");
    paramRenderSelectedRegion record{44100, -5, -6, false};
    EXPECT_EQ(Notify(view, notifyRenderSelectedRegion, record), 0);
    EXPECT_EQ(host.Asked(), Strings{"S render"});
    EXPECT_TRUE(record.fResult);
    EXPECT_EQ(record.lStart, 100);
    EXPECT_EQ(record.lEnd, 200);
    EXPECT_EQ(view->m_Script.m_strLastError,
              "Warning - Session Sample Rate is: 44100 Tavarin Pro Sample rate is: 48000");
    EXPECT_EQ(Text(view->m_textLastError), "");
}

TEST_F(LinkView, FailedRenderLeavesTheExtent) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    paramRenderSelectedRegion record{-1, -5, -6, true};
    Notify(view, notifyRenderSelectedRegion, record);
    EXPECT_FALSE(record.fResult);
    EXPECT_EQ(record.lStart, -5);
    EXPECT_EQ(record.lEnd, -6);
}

TEST_F(LinkView, UpdateCountIsWidenedWithItsSign) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    paramUpdateCount record{7};
    host.SetUpdateCount("-1\n");
    EXPECT_EQ(Notify(view, notifyUpdateCount, record), 0);
    EXPECT_EQ(record.lUpdateCount, -1);
    host.SetUpdateCount("2147483647\n");
    Notify(view, notifyUpdateCount, record);
    EXPECT_EQ(record.lUpdateCount, 2147483647);
}

TEST_F(LinkView, PrintPassesTheTextUnchangedWhateverItsSize) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    EXPECT_EQ([view NotificationReceived:notifyPrint Data:"it's \\ fine" DataSize:1], 0);
    EXPECT_EQ(host.Asked(), Strings{"print(\"it's \\ fine\")"});
}

TEST_F(LinkView, UnknownIdChangesNothing) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    EXPECT_EQ([view NotificationReceived:0x54415858 Data:nullptr DataSize:0], 0);
    EXPECT_EQ([view NotificationReceived:0 Data:"x" DataSize:1], 0);
    EXPECT_EQ(host.Asked(), Strings{});
    EXPECT_EQ(view->m_nCurrentHost, -1);
    EXPECT_EQ(Titles(view->m_popupTracks), (Strings{"Vox", "Gtr"}));
}

TEST_F(LinkView, CheckHostRefreshesTheTextsOnlyWhenTheHostChanged) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    [view->m_textLastError setStringValue:@"marked"];
    [view CheckHost];
    EXPECT_EQ(view->m_nCurrentHost, 3);
    EXPECT_EQ(Text(view->m_textLastError), "");
    [view->m_textLastError setStringValue:@"marked"];
    [view CheckHost];
    EXPECT_EQ(Text(view->m_textLastError), "marked");
    host.SetCurrentHost(0);
    [view CheckHost];
    EXPECT_EQ(view->m_nCurrentHost, 0);
    EXPECT_EQ(Text(view->m_textLastError), szNoSession);
    EXPECT_EQ(host.Asked(), Strings{}) << "the check asks for no list";
}

TEST_F(LinkView, FirstCheckWithoutAHostRefreshesNothing) {
    TavarinProLink_ViewController* view = MakeLink();
    [view->m_textLastError setStringValue:@"marked"];
    [view CheckHost];
    EXPECT_EQ(view->m_nCurrentHost, -1);
    EXPECT_EQ(Text(view->m_textLastError), "marked");
}

TEST_F(LinkView, PickingATrackByActionDoesNothing) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    host.Asked();
    [view OnTrack:view->m_popupTracks];
    EXPECT_EQ(host.Asked(), Strings{});
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
}

TEST_F(LinkView, PopUpMayOutliveItsController) {
    CViewHost host;
    TavarinProLink_ViewController* view = [Factory() LinkViewControllerFromBundle:Bundle()
                                                                 effectParameters:nullptr
                                                                       controller:nullptr];
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [view view];
    NSPopUpButton* popup = [view->m_popupTracks retain];
    host.Asked();
    [view release];
    [pool drain];
    [[NSNotificationCenter defaultCenter] postNotificationName:NSPopUpButtonWillPopUpNotification
                                                        object:popup];
    EXPECT_EQ(host.Asked(), Strings{}) << "nobody is left to ask";
    [popup release];
}

NSImageView* Logo(TavarinProLink_ViewController* view) {
    for (NSUInteger nIndex = 0; nIndex < [[[view view] subviews] count]; ++nIndex) {
        NSView* part = [[[view view] subviews] objectAtIndex:nIndex];
        if ([part isKindOfClass:[NSImageView class]] && [part frame].size.width > 100) {
            return (NSImageView*)part;
        }
    }
    return nil;
}

TEST_F(LinkView, LogoShowsOnlyWhenThereIsNoError) {
    TavarinProLink_ViewController* view = MakeLink();
    ASSERT_NE(Logo(view), nil);
    EXPECT_TRUE([Logo(view) isHidden]);
    CViewHost host;
    OpenPopUp(view);
    EXPECT_FALSE([Logo(view) isHidden]);
}

TEST_F(LinkView, TwoViewsListForThemselves) {
    CViewHost host;
    TavarinProLink_ViewController* one = MakeLink();
    TavarinProLink_ViewController* two = MakeLink();
    host.Asked();
    [one->m_TracksArray setSelectionIndex:1];
    OpenPopUp(two);
    EXPECT_EQ(host.Asked(), Strings{"S list"});
    EXPECT_EQ(Selected(one->m_TracksArray), 1);
    EXPECT_EQ(Selected(two->m_TracksArray), 0);
}

}  // namespace
