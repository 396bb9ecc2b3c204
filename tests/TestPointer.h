#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <string>
#include <vector>

/// One step of a journey: taken as soon as its condition holds.
struct CStep {
    CStep(std::function<bool()> isDue, std::function<void()> take)
        : m_IsDue(std::move(isDue)), m_Take(std::move(take)) {}

    std::function<bool()> m_IsDue;
    std::function<void()> m_Take;
};

/// Takes steps one after the other while AppKit is working, also inside its tracking loops, where
/// the code that started them waits. Whether all were taken within 20 seconds.
bool TakeSteps(std::vector<CStep> steps);

/// A condition that holds at the last of so many looks: AppKit has had as many turns by then.
struct CAfterLooks {
    int m_nLooks;
    bool operator()() { return --m_nLooks < 0; }
};

/// The real pointer of the test's display, moved by the program xdotool.
class CTestPointer {
public:
    /// Whether the program is there.
    static bool IsPossible();

    /// Points at the centre of a view that is in a visible window.
    void MoveTo(NSView* view);
    /// Points at a place on the screen.
    void MoveTo(NSPoint place);
    void Press();
    void Release();
    /// Presses and releases in the middle of a view, the way a hand does: AppKit sees the one
    /// before the other happens.
    bool Click(NSView* view);
    /// Presses and releases a key that xdotool knows by this name.
    void Key(std::string const& strName);

private:
    void Run(std::vector<std::string> arguments);
};

/// Windows on the screen that are not in `known`.
NSArray* NewWindows(NSArray* known);
NSArray* VisibleWindows();
