#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#import "Source/ViewControllerOperations.h"
#include "link/TANClientInterProcess.h"

/// A controller of any kind.
typedef NSViewController<TavarinProLink_ViewControllerOperations> CPlugInController;

/// Takes a line for the log.
using LogFunction = std::function<void(std::string const&)>;

/// The bundle, loaded from its path as a plug-in loads it. Throws `std::runtime_error` when there
/// is no such bundle or it does not load.
class CPlugInBundle {
public:
    explicit CPlugInBundle(std::string const& strPath);
    ~CPlugInBundle();
    CPlugInBundle(CPlugInBundle const&) = delete;
    CPlugInBundle& operator=(CPlugInBundle const&) = delete;

    /// A new controller for "link", "apt" or "doubler"; the caller owns it.
    CPlugInController* MakeController(std::string const& strKind) const;

private:
    NSBundle* m_bundle;
    id m_factory;
};

/// What became of a take.
enum class TakeOutcome {
    HandedOver,     ///< the host has it
    ProcessFailed,  ///< the host has it, but not what the view made of it there
    Duplicate,      ///< the host had the same audio already, and the file is gone
    Waits,          ///< there is no host, or none with a session
    Refused         ///< the host did not take it
};

/// One plug-in in the workstation: its view, and the notifications that it sends there. Each
/// notification is recorded, with its record before and after.
class CPlugIn {
public:
    CPlugIn(CPlugInBundle const& bundle, std::string strKind, LogFunction record);
    ~CPlugIn();
    CPlugIn(CPlugIn const&) = delete;
    CPlugIn& operator=(CPlugIn const&) = delete;

    std::string const& Kind() const { return m_strKind; }
    NSView* View() const { return [m_controller view]; }
    void CheckHost() { [m_controller CheckHost]; }

    /// Hands a take over, unless it has to wait; the host is asked afterwards whether it has it.
    TakeOutcome Capture(std::string const& strFile, double dPosition, double dEnd);
    /// Whether the APT view takes the next take as a guide.
    bool TakesGuide() const;
    /// Why the view or the host did not do what was asked last: what the view shows or what the
    /// client says of the host, and where neither says anything, `szOtherwise`.
    std::string WhyNot(const char* szOtherwise);
    /// The path of the exported file; nothing when nothing was exported.
    std::optional<std::string> Export(int nSampleRate);
    /// Where the region is that the host rendered; nothing when it rendered none.
    struct CSpan {
        std::int64_t lStart;
        std::int64_t lEnd;
    };
    std::optional<CSpan> Render(int nSampleRate);

    /// \name What the view does not answer
    /// Throws `std::runtime_error` when there is no host with a session.
    /// @{
    void Print(std::string const& strText);
    std::int64_t AskUpdateCount();
    /// @}

    /// \name What the user does in the view
    /// Throws `std::runtime_error`, which says why, when it cannot be done.
    /// @{
    void ChooseTake(bool fGuide);
    void SetAutoSwitch(bool fOn);
    /// Answers the track's name.
    std::string ChooseTrack(int nTrack);
    /// @}

private:
    int Track() const;
    std::string ErrorText() const;
    void RequireHost();
    void RequireAPT() const;
    void Notify(std::int32_t nType, void* pRecord, std::uint32_t nSize);

    std::string m_strKind;
    LogFunction m_record;
    CPlugInController* m_controller;
    CTANClientInterProcess m_client;
};
