// Views that live longer than their controllers, as in a workstation that still shows a window
// whose plug-in is gone.

#import "ViewFixture.h"

namespace {

using Strings = std::vector<std::string>;

class ViewLifetime : public CViewTest {
protected:
    // Loads a controller's view, lets `keep` retain what shall live on, and frees the controller.
    template <typename Controller, typename Keep>
    static void Outlive(Controller* controller, Keep const& keep) {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        [[controller view] retain];
        keep(controller);
        [controller release];
        [pool drain];
    }
};

TEST_F(ViewLifetime, ButtonsOfAFreedControllerCallNobody) {
    std::vector<NSButton*> buttons;
    NSView* view = nil;
    Outlive([Factory() APTLinkViewControllerFromBundle:Bundle()
                                      effectParameters:nullptr
                                            controller:nullptr],
            [&](TavarinProAPTLink_ViewController* controller) {
                view = [controller view];
                buttons = {controller->m_btnGuide, controller->m_btnDub,
                           controller->m_btnAutoTrackSwitch};
            });
    for (NSButton* button : buttons) {
        EXPECT_EQ([button target], nil);
        EXPECT_EQ([button action], SEL());
        [button performClick:nil];
    }
    [view release];
}

TEST_F(ViewLifetime, TracksOfAFreedControllerCanStillBeClicked) {
    CViewHost host({"Vox", "Gtr"});
    NSPopUpButton* popup = nil;
    NSView* view = nil;
    Outlive([Factory() LinkViewControllerFromBundle:Bundle()
                                   effectParameters:nullptr
                                         controller:nullptr],
            [&](TavarinProLink_ViewController* controller) {
                view = [controller view];
                popup = controller->m_popupTracks;
            });
    host.Asked();
    EXPECT_EQ([popup target], nil);
    EXPECT_EQ([popup action], SEL());
    ASSERT_EQ(Titles(popup), (Strings{"Vox", "Gtr"})) << "the list stays as it was";
    [[popup menu] performActionForItemAtIndex:1];
    [view display];
    EXPECT_EQ([popup indexOfSelectedItem], 1);
    EXPECT_EQ(host.Asked(), Strings{});
    [view release];
}

TEST_F(ViewLifetime, ArrayControllerLetsGoOfTheTracks) {
    CViewHost host({"Vox", "Gtr"});
    NSArrayController* tracks = nil;
    NSView* view = nil;
    Outlive([Factory() LinkViewControllerFromBundle:Bundle()
                                   effectParameters:nullptr
                                         controller:nullptr],
            [&](TavarinProLink_ViewController* controller) {
                view = [controller view];
                tracks = [controller->m_TracksArray retain];
            });
    EXPECT_EQ([[tracks arrangedObjects] count], 0u);
    [tracks setSelectionIndexes:[NSIndexSet indexSet]];
    [tracks release];
    [view display];
    [view release];
}

}  // namespace
