// The views in windows on a display, under a real pointer.

#import "Source/TextTip.h"
#import "Source/TrackList.h"
#import "Source/TrackPopUp.h"
#import "TestPointer.h"
#import "ViewFixture.h"

namespace {

using Strings = std::vector<std::string>;

class ViewPointer : public CViewTest {
protected:
    // Keys go to the window that a launched application has in front.
    static void SetUpTestSuite() {
        CViewTest::SetUpTestSuite();
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        [[NSUserDefaults standardUserDefaults]
            registerDefaults:[NSDictionary dictionaryWithObject:@"YES"
                                                         forKey:@"GSSuppressAppIcon"]];
        [NSApp finishLaunching];
        [pool drain];
    }

    void SetUp() override {
        CViewTest::SetUp();
        [[NSUserDefaults standardUserDefaults] setPersistentDomain:[NSDictionary dictionary]
                                                           forName:@TAVARIN_BUNDLE_IDENTIFIER];
        if (!CTestPointer::IsPossible()) GTEST_SKIP() << "no xdotool to move the pointer";
    }

    // Presses on the pop-up, goes to an entry of the menu that opens and lets go there.
    bool Pick(NSPopUpButton* popup, int nEntry) {
        NSArray* known = VisibleWindows();
        std::vector<CStep> steps;
        steps.emplace_back(CAfterLooks{0}, [=, this] { m_pointer.MoveTo(popup); });
        steps.emplace_back(CAfterLooks{5}, [this] { m_pointer.Press(); });
        steps.emplace_back([known] { return IsOpen(known); }, [] {});
        steps.emplace_back(CAfterLooks{10}, [=, this] {
            const NSRect menu = [[NewWindows(known) objectAtIndex:0] frame];
            const CGFloat height = menu.size.height / [popup numberOfItems];
            const CGFloat middle = NSMaxY(menu) - (nEntry + 0.5) * height;
            m_pointer.MoveTo(NSMakePoint(NSMidX(menu), middle));
        });
        steps.emplace_back(CAfterLooks{10}, [this] { m_pointer.Release(); });
        steps.emplace_back([known] { return !IsOpen(known); }, [] {});
        return TakeSteps(steps);
    }

    static bool IsOpen(NSArray* known) { return [NewWindows(known) count] > 0; }

    static std::string Stored() {
        NSDictionary* values = [[NSUserDefaults standardUserDefaults]
            persistentDomainForName:@TAVARIN_BUNDLE_IDENTIFIER];
        NSString* text = [values objectForKey:@"AutoSwitch"];
        return text == nil ? "" : [text UTF8String];
    }

    static std::string Picture(NSView* view) {
        [view display];
        [view lockFocus];
        NSBitmapImageRep* image =
            [[[NSBitmapImageRep alloc] initWithFocusedViewRect:[view bounds]] autorelease];
        [view unlockFocus];
        const auto* pixels = reinterpret_cast<const char*>([image bitmapData]);
        return {pixels, static_cast<std::size_t>([image bytesPerRow] * [image pixelsHigh])};
    }

    CTestPointer m_pointer;
};

TEST_F(ViewPointer, PickedTrackGetsTheCapture) {
    CViewHost host({"Vox", "Gtr"});
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    const std::string strFirst = Picture(view->m_popupTracks);
    host.Asked();
    ASSERT_TRUE(Pick(view->m_popupTracks, 1));
    EXPECT_EQ(host.Asked(), Strings{"S list"}) << "opening the pop-up fetches the list";
    EXPECT_EQ(Selected(view->m_TracksArray), 1);
    EXPECT_NE(Picture(view->m_popupTracks), strFirst);
    Capture(view, "/a/x.wav");
    EXPECT_EQ(host.Asked(),
              (Strings{"S duplicate 1 /a/x.wav 1000,0,48000", "S add 1 /a/x.wav 1000,0,48000"}));

    host.SetTracks({"Vox"});
    ASSERT_TRUE(Pick(view->m_popupTracks, 0));
    EXPECT_EQ(Titles(view->m_popupTracks), Strings{"Vox"});
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
    host.Asked();
    Capture(view, "/a/y.wav");
    EXPECT_EQ(host.Asked().at(0), "S duplicate 0 /a/y.wav 1000,0,48000");
}

TEST_F(ViewPointer, SecondOfTwoTracksOfOneNameCanBePicked) {
    CViewHost host({"Vox", "Vox", "Vox"});
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    ASSERT_TRUE(Pick(view->m_popupTracks, 1));
    EXPECT_EQ(Selected(view->m_TracksArray), 1);
    ASSERT_TRUE(Pick(view->m_popupTracks, 2));
    EXPECT_EQ(Selected(view->m_TracksArray), 2);
}

TEST_F(ViewPointer, ClicksChooseTheTakeAndThePictureFollows) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    Show(view);
    const std::string strGuide = Picture([view view]);
    ASSERT_TRUE(m_pointer.Click(view->m_btnDub));
    ASSERT_TRUE(WaitFor([view] { return !view->m_fGuideSelected; }));
    EXPECT_EQ([view->m_btnGuide state], 0);
    EXPECT_EQ([view->m_btnDub state], 1);
    EXPECT_NE(Picture([view view]), strGuide);
    ASSERT_TRUE(m_pointer.Click(view->m_btnGuide));
    ASSERT_TRUE(WaitFor([view] { return view->m_fGuideSelected; }));
    EXPECT_EQ([view->m_btnGuide state], 1);
    EXPECT_EQ([view->m_btnDub state], 0);
    ASSERT_TRUE(m_pointer.Click(view->m_btnGuide));
    ASSERT_TRUE(m_pointer.Click(view->m_btnAutoTrackSwitch));
    ASSERT_TRUE(WaitFor([view] { return view->m_fAutoSwitch; }));
    EXPECT_EQ([view->m_btnGuide state], 1) << "a second click does not let go of the guide";
    EXPECT_EQ([view->m_btnAutoTrackSwitch state], 1);
    EXPECT_EQ(Stored(), "1");
    const std::string strOn = Picture(view->m_btnAutoTrackSwitch);
    ASSERT_TRUE(m_pointer.Click(view->m_btnAutoTrackSwitch));
    ASSERT_TRUE(WaitFor([view] { return !view->m_fAutoSwitch; }));
    EXPECT_EQ([view->m_btnAutoTrackSwitch state], 0);
    EXPECT_EQ(Stored(), "0");
    EXPECT_NE(Picture(view->m_btnAutoTrackSwitch), strOn);
}

TavarinProLink_TrackPopUp* Tracks(TavarinProLink_ViewController* view) {
    return (TavarinProLink_TrackPopUp*)view->m_popupTracks;
}

NSRect OnScreen(NSView* view) {
    NSRect place = [view convertRect:[view bounds] toView:nil];
    place.origin = [[view window] convertBaseToScreen:place.origin];
    return place;
}

Strings ManyTracks() {
    Strings tracks;
    for (int nTrack = 0; nTrack < 1000; ++nTrack)
        tracks.push_back("Track " + std::to_string(nTrack));
    return tracks;
}

TEST_F(ViewPointer, QuickClickOpensTheListAndLeavesItOpen) {
    CViewHost host({"Vox", "Gtr", "Keys"});
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    NSArray* known = VisibleWindows();
    ASSERT_TRUE(m_pointer.Click(Tracks(view)));
    EXPECT_TRUE([Tracks(view) IsOpen]);
    ASSERT_EQ([NewWindows(known) count], 1u);
    const NSRect list = [[NewWindows(known) objectAtIndex:0] frame];
    const NSRect popup = OnScreen(Tracks(view));
    EXPECT_NEAR(list.size.width, popup.size.width, 2);
    EXPECT_NEAR(NSMinX(list), NSMinX(popup), 2);
    EXPECT_NEAR(NSMaxY(list), NSMinY(popup), 2);
    m_pointer.MoveTo(NSMakePoint(NSMidX(list), NSMaxY(list) - list.size.height * 5 / 6));
    ASSERT_TRUE(TakeSteps({{CAfterLooks{5}, [this] { m_pointer.Press(); }},
                           {CAfterLooks{5}, [this] { m_pointer.Release(); }},
                           {[=] { return ![Tracks(view) IsOpen]; }, [] {}}}));
    EXPECT_EQ(Selected(view->m_TracksArray), 2);
    EXPECT_FALSE(IsOpen(known));
}

TEST_F(ViewPointer, EscapeClosesTheListAndKeepsTheChoice) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    ASSERT_TRUE(m_pointer.Click(Tracks(view)));
    ASSERT_TRUE([Tracks(view) IsOpen]);
    m_pointer.Key("Down");
    m_pointer.Key("Escape");
    EXPECT_TRUE(WaitFor([=] { return ![Tracks(view) IsOpen]; }));
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
}

TEST_F(ViewPointer, KeysGoThroughTheListAndTypingFindsATrack) {
    CViewHost host(ManyTracks());
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    ASSERT_TRUE(m_pointer.Click(Tracks(view))) << "a click brings the keyboard";
    [Tracks(view) Close];
    ASSERT_TRUE(WaitFor([=] { return [NSApp keyWindow] == [[view view] window]; }));
    const auto choose = [&](Strings const& keys, int nExpected) {
        m_pointer.Key("space");
        ASSERT_TRUE(WaitFor([=] { return [Tracks(view) IsOpen]; }));
        for (std::string const& strKey : keys) m_pointer.Key(strKey);
        m_pointer.Key("Return");
        ASSERT_TRUE(WaitFor([=] { return ![Tracks(view) IsOpen]; }));
        EXPECT_EQ(Selected(view->m_TracksArray), nExpected);
    };
    choose({"Down", "Down"}, 2);
    choose({"End"}, 999);
    choose({"Up"}, 998);
    choose({"Home", "Down"}, 1);
    choose({"t", "r", "a", "c", "k", "space", "7", "3", "1"}, 731);
}

TEST_F(ViewPointer, ClickElsewhereClosesTheListAndDoesNothingElse) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    ASSERT_TRUE(m_pointer.Click(Tracks(view)));
    ASSERT_TRUE([Tracks(view) IsOpen]);
    m_pointer.MoveTo(NSMakePoint(205, 520));
    ASSERT_TRUE(TakeSteps({{CAfterLooks{5}, [this] { m_pointer.Press(); }},
                           {CAfterLooks{5}, [this] { m_pointer.Release(); }},
                           {CAfterLooks{5}, [] {}}}));
    EXPECT_FALSE([Tracks(view) IsOpen]);
    EXPECT_EQ(Selected(view->m_TracksArray), 0);
}

TEST_F(ViewPointer, OpenListLeavesTheRunLoopToOthersAlsoWhileAButtonIsHeld) {
    CViewHost host;
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    m_pointer.MoveTo(Tracks(view));
    m_pointer.Press();
    // Whoever runs the loop gets it back after every event, in its usual mode.
    EXPECT_TRUE(WaitFor([=] { return [Tracks(view) IsOpen]; }));
    int nTurns = 0;
    EXPECT_TRUE(WaitFor([&] { return ++nTurns > 5; }));
    EXPECT_TRUE([Tracks(view) IsOpen]);
    m_pointer.Release();
    [Tracks(view) Close];
}

TEST_F(ViewPointer, LongListScrollsUnderTheArrow) {
    CViewHost host(ManyTracks());
    TavarinProLink_ViewController* view = MakeLink();
    Show(view);
    NSArray* known = VisibleWindows();
    ASSERT_TRUE(m_pointer.Click(Tracks(view)));
    ASSERT_EQ([NewWindows(known) count], 1u);
    NSWindow* window = [NewWindows(known) objectAtIndex:0];
    TavarinProLink_TrackList* list = (TavarinProLink_TrackList*)[window contentView];
    EXPECT_TRUE(NSContainsRect([[NSScreen mainScreen] frame], [window frame]));
    EXPECT_EQ([list First], 0);
    m_pointer.MoveTo(NSMakePoint(NSMidX([window frame]), NSMinY([window frame]) + 5));
    EXPECT_TRUE(WaitFor([=] { return [list First] > 3; }));
    m_pointer.MoveTo(NSMakePoint(NSMidX([window frame]), NSMaxY([window frame]) - 5));
    EXPECT_TRUE(WaitFor([=] { return [list First] == 0; }));
    [Tracks(view) Close];
}

TEST_F(ViewPointer, TipHasTheWholeOfALongTextAndGoesWithThePointer) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    Show(view);
    view->m_Script.m_strLastError = "An error.";
    while (view->m_Script.m_strAdvice.size() < 4000) view->m_Script.m_strAdvice += "Do it again. ";
    [view SetTextFields];
    NSArray* known = VisibleWindows();
    m_pointer.MoveTo(view->m_textAdvice);
    ASSERT_TRUE(WaitFor([=] { return IsOpen(known); }));
    NSWindow* window = [NewWindows(known) objectAtIndex:0];
    TavarinProLink_TextTip* tip = (TavarinProLink_TextTip*)[window contentView];
    EXPECT_EQ(view->m_Script.m_strAdvice, [[tip ShownText] UTF8String]);
    EXPECT_TRUE(NSContainsRect([[NSScreen mainScreen] frame], [window frame]));
    m_pointer.MoveTo(view->m_textLastError);
    EXPECT_TRUE(WaitFor([=] { return !IsOpen(known); }));
    // The tip may have lain over this text: it is entered with the pointer's next movement.
    const NSRect error = OnScreen(view->m_textLastError);
    m_pointer.MoveTo(NSMakePoint(NSMidX(error) + 5, NSMidY(error)));
    ASSERT_TRUE(WaitFor([=] { return IsOpen(known); }));
    tip = (TavarinProLink_TextTip*)[[NewWindows(known) objectAtIndex:0] contentView];
    EXPECT_STREQ("An error.", [[tip ShownText] UTF8String]);
    view->m_Script.m_strLastError = "Another error.";
    [view SetTextFields];
    EXPECT_FALSE(IsOpen(known)) << "its text is not said any more";
}

}  // namespace
