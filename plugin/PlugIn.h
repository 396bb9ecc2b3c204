#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "plugin/CaptureDirectory.h"
#include "plugin/CaptureRing.h"
#include "plugin/LinkSender.h"
#include "plugin/PlugInAccess.h"
#include "plugin/SharedGuide.h"
#include "plugin/SpscQueue.h"
#include "plugin/TakeBook.h"
#include "plugin/TakePlayer.h"
#include "plugin/TakeWriter.h"
#include "plugin/TransportClock.h"
#include "plugin/WindowProcess.h"

/// What the user or the workstation has set, for one cycle.
struct CPlugInControls {
    bool fCapture = false;
    bool fReturn = false;
    ReturnMode mode = ReturnMode::RenderAndExport;
    std::int32_t nTrack = 0;
    bool fFreewheel =
        false;  ///< the workstation does not run in real time, and may be kept waiting
};

/// A message for the workstation, of a size that the audio thread can handle.
struct CPlugInMessage {
    PlugInResult result = PlugInResult::Ready;
    char szText[252] = {};
};

/// One plug-in: audio passes through it unchanged; while Capture is on it also goes to disk, and
/// while Return is on a file that came back from the host takes its place.
///
/// A take begins when Capture is on and the transport rolls, and ends when either is over, when the
/// transport jumps or no cycle comes for a second. A gap of up to a second, which a workstation
/// that dropped out leaves, does not end it: it becomes silence. The disk thread, one per plug-in,
/// writes takes, loads returned files and, while there is no window, has them handed over.
class CPlugIn final : public CPlugInAccess {
public:
    CPlugIn(PlugInKind kind, int nChannels, int nSampleRate);
    ~CPlugIn();
    CPlugIn(CPlugIn const&) = delete;
    CPlugIn& operator=(CPlugIn const&) = delete;

    int Channels() const { return m_nChannels; }

    /// \name Audio thread
    /// No lock, no allocation, no file; except that a capture waits for the disk while the
    /// workstation freewheels.
    /// @{

    /// Begins a cycle.
    void Begin(CPlugInControls const& controls);

    /// The workstation says where its transport is from the next frame on.
    void SetTransport(std::int64_t lPosition, double dSpeed);

    /// The workstation has no way to tell of a transport: time is what passes.
    void CountByItself() { m_Clock.CountByItself(); }

    /// Passes frames `nFrom` to `nFrom + nFrames` on. Inputs and outputs may be the same memory.
    void Run(float const* const* inputs, float* const* outputs, std::uint32_t nFrom,
             std::uint32_t nFrames);

    /// What the result port shows.
    PlugInResult Result() const;

    /// A window module that reaches the plug-in by messages alone ordered something. What its
    /// window says goes the same way from now on.
    void PutOrder(CWindowOrder const& order) { m_Orders.Put(order); }

    /// The next note for that module; null when there is none. Drop it when it was sent.
    CWindowNote const* Note() const { return m_Notes.Front(); }
    void DropNote() { m_Notes.Drop(); }

    /// The next message for the workstation; null when there is none. Drop it when it was sent.
    CPlugInMessage const* Message() const { return m_Messages.Front(); }
    void DropMessage() { m_Messages.Drop(); }
    /// @}

    /// Where a window module in this process orders the window.
    CWindowDesk& Desk() { return m_Window; }

    /// Ends a take under way. When the audio thread does not run.
    void Stop();

    /// \name State
    /// Any thread but the audio thread.
    /// @{
    CPlugInState State() const;
    void Restore(CPlugInState const& state);
    /// @}

    PlugInKind Kind() const override { return m_Kind; }
    int SampleRate() const override { return m_nSampleRate; }
    void ViewTurned() override;
    std::optional<CTake> PickTake() override;
    bool IsTakeWaiting() const override { return m_Book.IsWaiting(); }
    void TakeHandled(std::int32_t nTrack) override;
    void TakePutBack(TakeFate fate) override;
    std::optional<CTake> LastTakeOn(std::int32_t nTrack) const override;
    std::optional<CGuide> Guide() const override;
    std::optional<CTake> LastTake() const override { return m_Book.Last(); }
    std::int32_t Track() const override { return m_Book.Track(); }
    void SetTrack(std::int32_t nTrack) override { m_Book.SetTrack(nTrack); }
    bool PickReturnRequest(ReturnMode* mode) override;
    void SetReturned(std::string const& strFile, std::int64_t lPosition) override;
    CPlugInStatus Status() const override;
    void Report(PlugInResult result, std::string const& strText) override;
    CPlugInActivity Activity() const override;

private:
    struct CReturn {
        std::string strFile;
        std::int64_t lPosition;
        bool fCopy;
    };

    void Capture(float const* const* inputs, std::uint32_t nFrom, std::uint32_t nFrames);
    void BlockCapture();
    bool FillGap();
    void EndTake(TakeEnd end);

    void ServeDisk();
    void ServeTakes();
    void WatchCycles();
    void ReleaseCapture();
    void ServeReturn();
    void ServeLink();
    void ServeWindow();
    void LeaveTakes();
    CLinkJob Job(std::optional<CTake> const& take) const;
    void Finished(CTake const& take);
    void LoadReturn(CReturn const& wanted);
    void WarnOf(CLinkJob const& job);
    void Apply(CLinkOutcome const& outcome);
    std::string ReturnedText() const;
    bool HasView() const;

    const PlugInKind m_Kind;
    const int m_nChannels;
    const int m_nSampleRate;

    // Audio thread.
    CTransportClock m_Clock;
    CPlugInControls m_Controls;
    bool m_fControlsKnown = false;
    bool m_fInTake = false;
    bool m_fCaptureBlocked = false;  ///< Capture has to go off first

    // Between the audio thread and others.
    CCaptureRing m_Ring;
    CTakePlayer m_Player;
    CSpscQueue<CPlugInMessage, 16> m_Messages;
    CSpscQueue<CWindowOrder, 8> m_Orders;
    CSpscQueue<CWindowNote, 64> m_Notes;
    std::atomic<PlugInResult> m_Result{PlugInResult::Ready};
    std::atomic<std::int32_t> m_nReturnRequest{-1};
    std::atomic<std::int32_t> m_nTrackPort{-1};
    std::atomic<std::uint32_t> m_nFailedTake{0};
    std::atomic<std::uint32_t> m_nAbandonedTake{0};  ///< ended without the audio thread
    std::atomic<std::uint32_t> m_nCycles{0};
    std::atomic<bool> m_fRestored{false};
    std::atomic<bool> m_fBlocked{false};  ///< as m_fCaptureBlocked
    std::atomic<bool> m_fCapture{false};
    std::atomic<bool> m_fReturn{false};
    std::atomic<ReturnMode> m_Mode{ReturnMode::RenderAndExport};
    std::atomic<bool> m_fCapturing{false};
    std::atomic<bool> m_fHasReturned{false};
    std::atomic<std::int64_t> m_lTakeFrames{0};

    // All others.
    std::atomic<std::int64_t> m_lViewTurned;
    CTakeBook m_Book;
    const std::shared_ptr<CSharedGuide> m_pGuide;  ///< null but in APT plug-ins
    CCaptureDirectory m_Directory;
    mutable std::mutex m_StatusLock;
    CPlugInStatus m_Status;
    std::mutex m_ReturnLock;
    std::optional<CReturn> m_Wanted;

    // Disk thread.
    CTakeWriter m_Writer;
    CLinkSender m_Sender;
    CWindowProcess m_Window;
    bool m_fNotesByMessage = false;
    std::uint32_t m_nSeenCycles = 0;
    std::int64_t m_lSeenCycle = 0;
    std::int64_t m_lNextRelease = 0;
    std::optional<CTake> m_Sending;  ///< in the sender's hands
    std::string m_strWarnedOf;       ///< the file of the take that was said not to be aligned
    std::int64_t m_lNextTry = 0;
    std::atomic<bool> m_fQuit{false};
    std::thread m_DiskThread;
};
