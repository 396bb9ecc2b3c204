#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <memory>

#include "plugin/PlugInAccess.h"

/// Told when the user changes a control port in the window.
using ControlFunction = std::function<void(PlugInPort, float)>;

/// The window of one plug-in: its view, and below it a strip with the plug-in's own controls and
/// the result of the last command. For the thread of the user interface.
class CPlugInWindow {
public:
    /// Makes the view; nothing is on the screen yet. Throws `std::runtime_error` with a sentence
    /// for the user when there is no display or no bundle.
    CPlugInWindow(CPlugInAccess& plugIn, std::string const& strTitle, ControlFunction control);
    ~CPlugInWindow();
    CPlugInWindow(CPlugInWindow const&) = delete;
    CPlugInWindow& operator=(CPlugInWindow const&) = delete;

    void Show();
    void Hide();
    /// Whether the user closed the window since it was shown last.
    bool IsClosed() const;

    /// Handles what waits for the window, and takes one step of the plug-in's schedule.
    void Turn();

    /// A control port has this value now.
    void ShowControl(PlugInPort port, float value);

private:
    struct CContents;
    std::unique_ptr<CContents> m_pContents;
};
