#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <memory>

#include "window/PlugInMirror.h"

/// The window of one plug-in: its view, and below it a strip with the plug-in's own controls and
/// the result of the last command. For the thread of the user interface.
class CPlugInWindow {
public:
    /// Makes the view; nothing is on the screen yet. Throws `std::runtime_error` with a sentence
    /// for the user when there is no bundle.
    explicit CPlugInWindow(CPlugInMirror& plugIn);
    ~CPlugInWindow();
    CPlugInWindow(CPlugInWindow const&) = delete;
    CPlugInWindow& operator=(CPlugInWindow const&) = delete;

    /// Shows it for the first time: within the workstation's, or in front of all others.
    void Show();
    /// Shows it in front of all others.
    void Raise();
    /// Whether the user closed it.
    bool IsClosed() const;
    /// For another thread, while this one waits: whether the user asked for it to be closed. Stays
    /// callable as long as the application does.
    std::function<bool()> CloseWatch() const;

    /// Shows what the plug-in says, and takes one step of its schedule, which may wait for the
    /// host.
    void Turn();

private:
    struct CContents;
    std::unique_ptr<CContents> m_pContents;
};
