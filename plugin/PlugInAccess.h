#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "plugin/PlugInTable.h"
#include "plugin/Take.h"
#include "plugin/WindowDesk.h"

/// Where the result of the last command stands, and how the view and others are told of it.
struct CPlugInStatus {
    PlugInResult result = PlugInResult::Ready;
    std::string strText;        ///< for the user, UTF-8
    std::uint64_t nSerial = 0;  ///< grows with every report
};

/// What the audio thread is doing, for display.
struct CPlugInActivity {
    bool fCapture = false;  ///< the Capture control, unless it has to go off first
    bool fReturn = false;   ///< the Return control
    ReturnMode mode = ReturnMode::RenderAndExport;  ///< the Mode control
    bool fCapturing = false;                        ///< whether a take is being recorded right now
    std::int64_t lTakeFrames = 0;                   ///< how long it is by now
    bool fHasReturned = false;                      ///< whether there is a returned file to play
};

/// What is known of a take that was handed over without an answer.
enum class TakeFate {
    NotThere,  ///< nobody got it
    Unknown,   ///< the host may have it
};

/// The plug-in as its window sees it: in the window's own process, by what the plug-in told it
/// last.
class CPlugInAccess {
public:
    virtual PlugInKind Kind() const = 0;
    virtual int SampleRate() const = 0;

    /// To be called whenever the window's run loop turns. As long as it was called within the last
    /// three seconds, takes and returns are left to the window; otherwise the plug-in talks to the
    /// host by itself.
    virtual void ViewTurned() = 0;

    /// The oldest take that waits, which is then in the caller's hands until `TakeHandled` or
    /// `TakePutBack`. Nothing when none waits or somebody else has one in hands.
    virtual std::optional<CTake> PickTake() = 0;
    virtual bool IsTakeWaiting() const = 0;
    /// The host has it on this track, or refused it: -1.
    virtual void TakeHandled(std::int32_t nTrack) = 0;
    /// The take waits again: under another name when the host may have it by this one, since a file
    /// that is found to be there twice is deleted.
    virtual void TakePutBack(TakeFate fate) = 0;
    /// The last take that the host has on a track.
    virtual std::optional<CTake> LastTakeOn(std::int32_t nTrack) const = 0;
    /// Of an APT plug-in: the guide that all of this process share, whichever captured it.
    virtual std::optional<CGuide> Guide() const = 0;
    /// The last take of all.
    virtual std::optional<CTake> LastTake() const = 0;

    /// The chosen track; of an APT plug-in 0: guide, 1: dub.
    virtual std::int32_t Track() const = 0;
    virtual void SetTrack(std::int32_t nTrack) = 0;

    /// True once for each time that Return was switched on: the host's selected region is wanted.
    virtual bool PickReturnRequest(ReturnMode* mode) = 0;
    /// An exported file that is to be played from a position on the timeline, in samples. It is
    /// copied and loaded in the background; the status says how that went.
    virtual void SetReturned(std::string const& strFile, std::int64_t lPosition) = 0;

    virtual CPlugInStatus Status() const = 0;
    virtual void Report(PlugInResult result, std::string const& strText) = 0;
    virtual CPlugInActivity Activity() const = 0;

protected:
    ~CPlugInAccess() = default;
};

/// What an instance handle of the plug-in's module points to, for a window module that the
/// workstation gives that handle. Both modules come from one build.
struct CPlugInHandle {
    CPlugInAccess* pAccess = nullptr;
    CWindowDesk* pDesk = nullptr;
};
