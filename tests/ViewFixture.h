#pragma once

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Source/Notifications.h"
#import "Source/TavarinProAPTLink_ViewController.h"
#import "Source/TavarinProDoublerLink_ViewController.h"
#import "Source/TavarinProLink_ViewController.h"
#import "Source/TavarinProLink_ViewControllerFactory.h"
#include "TemporaryDirectory.h"
#include "ViewHost.h"

/// Any of the three view controllers.
typedef id<TavarinProLink_ViewControllerOperations> AnyView;

/// The real bundle, loaded as a plug-in loads it, in a process with an application object.
class CViewTest : public testing::Test {
protected:
    static void SetUpTestSuite();

    void SetUp() override;
    void TearDown() override;

    static NSBundle* Bundle();
    TavarinProLink_ViewControllerFactory* Factory() const { return m_factory; }

    /// Each makes a controller whose view is loaded; it goes with the test.
    TavarinProLink_ViewController* MakeLink();
    TavarinProAPTLink_ViewController* MakeAPT();
    TavarinProDoublerLink_ViewController* MakeDoubler();

    /// Shows a view in a window of its own.
    NSWindow* Show(NSViewController* controller);

    /// A file with some bytes in it, to be captured.
    std::string MakeTake(std::string const& strName = "take.wav") {
        return m_directory.Write(strName, "some audio");
    }

    CTemporaryDirectory m_directory;

private:
    template <typename Controller>
    Controller* Keep(Controller* controller);

    NSAutoreleasePool* m_pool = nil;
    TavarinProLink_ViewControllerFactory* m_factory = nil;
    NSMutableArray* m_controllers = nil;
    NSMutableArray* m_windows = nil;
};

/// A capture record; everything not given is filled with a pattern.
paramPostAnalyze MakeCapture(std::string const& strPath, double dPosition = 1000, double dStart = 0,
                             double dEnd = 48000);

/// Sends a record the way a plug-in does. Always with the result 0.
template <typename Record>
int Notify(AnyView view, std::int32_t nType, Record& record) {
    return [view NotificationReceived:nType Data:&record DataSize:sizeof(record)];
}
int Capture(AnyView view, std::string const& strPath, double dPosition = 1000, double dStart = 0,
            double dEnd = 48000);
bool Export(AnyView view);

std::string Text(NSTextField* field);
std::vector<std::string> Titles(NSPopUpButton* popup);
/// The selected position as the views see it; -1 for none.
int Selected(NSArrayController* controller);

/// Lets AppKit work until a condition holds or 20 seconds are over; whether it holds.
bool WaitFor(std::function<bool()> const& condition);
