#include "plugin/PlugIn.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "plugin/GuideText.h"
#include "plugin/TakeMarks.h"
#include "plugin/TakeText.h"
#include "plugin/TimeText.h"
#include "plugin/TrackClaims.h"

namespace {

constexpr int kRingSeconds = 8;
constexpr std::chrono::milliseconds kDiskTurn{10};
constexpr std::chrono::milliseconds kFreewheelWait{1};
constexpr std::int64_t kViewPatience = 3000;
constexpr std::int64_t kRetryEvery = 1000;
constexpr std::int64_t kCyclePatience = 1000;
constexpr std::int64_t kReleaseEvery = 500;
constexpr std::int32_t kGuideTrack = 0;

std::int64_t Milliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// For a take that the host may have: it deletes nothing of the host's then.
bool RenameTake(PlugInKind kind, CTake& take) {
    const std::string strOther = CCaptureDirectory::SecondName(take.strFile);
    if (strOther.empty()) return false;
    UnmarkTake(take.strFile);
    take.strFile = strOther;
    take.fMayBeThere = true;
    MarkTake(static_cast<std::int32_t>(kind), take);
    return true;
}

}  // namespace

CPlugIn::CPlugIn(PlugInKind kind, int nChannels, int nSampleRate)
    : m_Kind(kind),
      m_nChannels(nChannels),
      m_nSampleRate(nSampleRate),
      m_Ring(nChannels, static_cast<std::size_t>(nSampleRate) * kRingSeconds),
      m_Player(nSampleRate),
      m_lViewTurned(Milliseconds()),
      m_Book(static_cast<std::int32_t>(kind)),
      m_pGuide(kind == PlugInKind::APT ? CSharedGuide::Join() : nullptr),
      m_Writer(m_Ring, m_Directory, nSampleRate),
      m_Window(*this, WindowProgramPath()),
      m_DiskThread([this] { ServeDisk(); }) {}

CPlugIn::~CPlugIn() {
    Stop();
    m_fQuit = true;
    m_DiskThread.join();
    m_Window.End();
    LeaveTakes();
    CTrackClaims::Shared().Drop(this);
}

// What waits goes to the host without this plug-in, if there is a host; and otherwise when somebody
// opens the capture directory again.
void CPlugIn::LeaveTakes() {
    std::vector<CLinkJob> jobs;
    while (std::optional<CTake> take = m_Book.Pick()) {
        jobs.push_back(Job(take));
        m_Book.Handled(m_Book.Track());
    }
    if (!jobs.empty()) CarryOutAlone(std::move(jobs));
}

CLinkJob CPlugIn::Job(std::optional<CTake> const& take) const {
    CLinkJob job;
    job.kind = m_Kind;
    job.nSampleRate = m_nSampleRate;
    job.nTrack = m_Book.Track();
    job.take = take;
    const std::optional<CGuide> guide = Guide();
    if (take && guide) job.guide = guide->take;
    return job;
}

void CPlugIn::Begin(CPlugInControls const& controls) {
    // A workstation that opens a session with Return on wants the file of that session, not
    // another.
    const bool fWasOn = m_fControlsKnown ? m_Controls.fReturn : m_fHasReturned.load();
    if (controls.fReturn && !fWasOn) m_nReturnRequest = static_cast<std::int32_t>(controls.mode);
    if (!m_fControlsKnown || controls.nTrack != m_Controls.nTrack) m_nTrackPort = controls.nTrack;
    // A session that is opened must not begin to capture by itself.
    if (!m_fControlsKnown && m_fRestored) m_fCaptureBlocked = true;
    if (!controls.fCapture) m_fCaptureBlocked = false;
    m_fBlocked.store(m_fCaptureBlocked, std::memory_order_relaxed);
    m_Controls = controls;
    m_fControlsKnown = true;
    m_fCapture.store(controls.fCapture, std::memory_order_relaxed);
    m_fReturn.store(controls.fReturn, std::memory_order_relaxed);
    m_Mode.store(controls.mode, std::memory_order_relaxed);
    m_Player.TakeOver();
}

void CPlugIn::SetTransport(std::int64_t lPosition, double dSpeed) {
    m_Clock.Set(lPosition, dSpeed);
}

void CPlugIn::Run(float const* const* inputs, float* const* outputs, std::uint32_t nFrom,
                  std::uint32_t nFrames) {
    m_nCycles.fetch_add(1, std::memory_order_relaxed);
    if (m_fInTake && m_nAbandonedTake.load(std::memory_order_acquire) == m_Ring.Take()) {
        EndTake(TakeEnd::Stopped);
    }
    const bool fJumped = m_Clock.TakeJump();
    if (fJumped) m_Player.Jump();
    if (m_fInTake && (!m_Controls.fCapture || (fJumped && !FillGap()))) EndTake(TakeEnd::Stopped);
    if (m_Controls.fCapture && m_Clock.IsRolling()) Capture(inputs, nFrom, nFrames);

    for (int nChannel = 0; nChannel < m_nChannels; ++nChannel) {
        if (outputs[nChannel] == inputs[nChannel]) continue;
        std::memmove(outputs[nChannel] + nFrom, inputs[nChannel] + nFrom, nFrames * sizeof(float));
    }
    if (m_Clock.IsRolling()) {
        m_Player.Play(m_Controls.fReturn, m_Clock.Position(), outputs, m_nChannels, nFrom, nFrames);
    }
    m_Clock.Advance(nFrames);
}

void CPlugIn::Capture(float const* const* inputs, std::uint32_t nFrom, std::uint32_t nFrames) {
    if (m_fInTake && m_nFailedTake.load(std::memory_order_acquire) == m_Ring.Take()) {
        EndTake(TakeEnd::DiskFailed);
        BlockCapture();
    }
    if (m_fCaptureBlocked || nFrames == 0) return;
    if (!m_fInTake) {
        m_fInTake = m_Ring.Begin(m_Clock.Position());
        m_lTakeFrames.store(0, std::memory_order_relaxed);
        m_fCapturing.store(m_fInTake, std::memory_order_relaxed);
        if (!m_fInTake) return;
    }
    while (m_Controls.fFreewheel && m_Ring.Room() < nFrames) {
        std::this_thread::sleep_for(kFreewheelWait);
    }
    const std::uint32_t nAppended = m_Ring.Append(inputs, nFrom, nFrames);
    m_lTakeFrames.fetch_add(nAppended, std::memory_order_relaxed);
    if (nAppended == nFrames) return;
    EndTake(TakeEnd::Overflow);
    BlockCapture();
}

void CPlugIn::BlockCapture() {
    m_fCaptureBlocked = true;
    m_fBlocked.store(true, std::memory_order_relaxed);
}

// A workstation that dropped out goes on a little later. The take stays one, and in its place.
bool CPlugIn::FillGap() {
    const std::int64_t lGap = m_Clock.Gap();
    if (lGap <= 0 || lGap > m_nSampleRate) return false;
    if (!m_Ring.Gap(lGap)) return false;
    m_lTakeFrames.fetch_add(lGap, std::memory_order_relaxed);
    return true;
}

void CPlugIn::EndTake(TakeEnd end) {
    m_Ring.End(end);
    m_fInTake = false;
    m_fCapturing.store(false, std::memory_order_relaxed);
}

PlugInResult CPlugIn::Result() const {
    return m_fInTake ? PlugInResult::Capturing : m_Result.load(std::memory_order_relaxed);
}

void CPlugIn::Stop() {
    if (m_fInTake) EndTake(TakeEnd::Stopped);
    m_fCaptureBlocked = false;
}

CPlugInState CPlugIn::State() const {
    CPlugInState state = m_Book.State();
    state.strCaptureDirectory = m_Directory.Path();
    return state;
}

void CPlugIn::Restore(CPlugInState const& state) {
    m_fRestored = true;
    CPlugInState current = state;
    BringUpToDate(current.takes, MarkedTakes(state.nKind, state.strCaptureDirectory));
    for (CTake& take : current.takes) {
        // It may have been handed over after the session was saved.
        if (!take.fHandled) RenameTake(m_Kind, take);
    }
    m_Book.SetState(current);
    const std::optional<CTake> guide = m_Book.LastOn(kGuideTrack);
    if (m_pGuide && guide) m_pGuide->Offer(*guide);
    m_Directory.Use(state.strCaptureDirectory);
    m_nReturnRequest = -1;
    if (state.strReturnedFile.empty()) {
        m_fHasReturned = false;
        m_Player.Give(nullptr);
        return;
    }
    m_fHasReturned = true;
    const std::lock_guard lock(m_ReturnLock);
    m_Wanted = CReturn{state.strReturnedFile, state.lReturnedPosition, false};
}

void CPlugIn::ViewTurned() {
    m_lViewTurned.store(Milliseconds(), std::memory_order_relaxed);
}

bool CPlugIn::HasView() const {
    return Milliseconds() - m_lViewTurned.load(std::memory_order_relaxed) < kViewPatience;
}

std::optional<CTake> CPlugIn::LastTakeOn(std::int32_t nTrack) const {
    return m_Book.LastOn(nTrack);
}

std::optional<CGuide> CPlugIn::Guide() const {
    return m_pGuide ? m_pGuide->Last() : std::nullopt;
}

std::optional<CTake> CPlugIn::PickTake() {
    std::optional<CTake> take = m_Book.Pick();
    if (!take) return std::nullopt;
    const std::int32_t nTrack = m_Kind == PlugInKind::Doubler ? 0 : m_Book.Track();
    switch (CTrackClaims::Shared().Make(this, m_Kind, nTrack, *take)) {
        case CTrackClaims::Claim::Free:
            break;
        case CTrackClaims::Claim::Replaces:
            // A Link only adds to what is there.
            take->fReplaces = m_Kind != PlugInKind::Link;
            break;
        case CTrackClaims::Claim::Twin:
            TakeHandled(-1);
            Report(PlugInResult::Twin,
                   "Another plug-in captured the same stretch for this track; this take was kept "
                   "and not sent: " +
                       take->strFile);
            return std::nullopt;
    }
    return take;
}

void CPlugIn::TakeHandled(std::int32_t nTrack) {
    std::optional<CTake> take = m_Book.Picked();
    m_Book.Handled(nTrack);
    if (!take) return;
    take->nTrack = nTrack;
    take->fHandled = true;
    MarkTake(static_cast<std::int32_t>(m_Kind), *take);
    if (m_pGuide && nTrack == kGuideTrack) m_pGuide->Put(*take);
}

void CPlugIn::TakePutBack(TakeFate fate) {
    std::optional<CTake> take = m_Book.Picked();
    if (fate == TakeFate::NotThere || !take) {
        m_Book.PutBack();
    } else if (RenameTake(m_Kind, *take)) {
        m_Book.PutBackAs(take->strFile);
    } else {
        TakeHandled(-1);
        Report(PlugInResult::DiskFailed,
               "Whether the host has the take is not known, and it cannot be sent again: " +
                   take->strFile);
    }
}

bool CPlugIn::PickReturnRequest(ReturnMode* mode) {
    const std::int32_t nRequest = m_nReturnRequest.exchange(-1);
    if (nRequest < 0) return false;
    *mode = static_cast<ReturnMode>(nRequest);
    return true;
}

void CPlugIn::SetReturned(std::string const& strFile, std::int64_t lPosition) {
    const std::lock_guard lock(m_ReturnLock);
    m_Wanted = CReturn{strFile, lPosition, true};
}

CPlugInStatus CPlugIn::Status() const {
    const std::lock_guard lock(m_StatusLock);
    CPlugInStatus status = m_Status;
    if (status.result == PlugInResult::Returned) status.strText = ReturnedText();
    return status;
}

// Return may be switched after the region came.
std::string CPlugIn::ReturnedText() const {
    const std::string strPlace = TimeText(m_Book.State().lReturnedPosition, m_nSampleRate);
    return "The host's region " + std::string(m_fReturn ? "plays" : "is ready") + " from " +
           strPlace + " on.";
}

void CPlugIn::Report(PlugInResult result, std::string const& strText) {
    const std::lock_guard lock(m_StatusLock);
    m_Status.result = result;
    m_Status.strText = strText;
    ++m_Status.nSerial;
    m_Result = result;
    CPlugInMessage message;
    message.result = result;
    std::snprintf(message.szText, sizeof(message.szText), "%s", strText.c_str());
    m_Messages.Put(message);
}

CPlugInActivity CPlugIn::Activity() const {
    return {
        m_fCapture && !m_fBlocked, m_fReturn, m_Mode, m_fCapturing, m_lTakeFrames, m_fHasReturned};
}

void CPlugIn::ServeDisk() {
    while (!m_fQuit) {
        WatchCycles();
        ServeTakes();
        ServeReturn();
        ReleaseCapture();
        ServeWindow();
        ServeLink();
        std::this_thread::sleep_for(kDiskTurn);
    }
    ServeTakes();
}

// A workstation may stop running the plug-in without a word, and the take is not to wait for it.
void CPlugIn::WatchCycles() {
    const std::uint32_t nCycles = m_nCycles.load(std::memory_order_relaxed);
    if (nCycles != m_nSeenCycles || !m_fCapturing) {
        m_nSeenCycles = nCycles;
        m_lSeenCycle = Milliseconds();
        return;
    }
    if (Milliseconds() - m_lSeenCycle < kCyclePatience) return;
    ServeTakes();
    std::vector<CTake> finished;
    m_nAbandonedTake.store(m_Writer.Abandon(finished), std::memory_order_release);
    m_fCapturing = false;
    for (CTake const& take : finished) Finished(take);
}

// A control that stays on without effect would have to be pressed twice. Only a window can set it.
void CPlugIn::ReleaseCapture() {
    if (!m_fBlocked || !m_fCapture || Milliseconds() < m_lNextRelease) return;
    m_lNextRelease = Milliseconds() + kReleaseEvery;
    m_Window.Tell({0, portCapture, 0});
}

void CPlugIn::ServeTakes() {
    std::vector<CTake> finished;
    m_Writer.Service(finished);
    m_nFailedTake.store(m_Writer.FailedTake(), std::memory_order_release);
    for (CTake const& take : finished) Finished(take);
}

void CPlugIn::Finished(CTake const& take) {
    const std::string strLength = TakeLength(take, m_nSampleRate);
    if (take.end == TakeEnd::Overflow) {
        Report(PlugInResult::Overflow,
               "The disk did not keep up: the take was stopped after " + strLength + ".");
    } else if (take.end == TakeEnd::DiskFailed) {
        Report(
            PlugInResult::DiskFailed,
            "The disk is full or cannot be written: the take was stopped after " + strLength + ".");
    } else {
        Report(PlugInResult::TakeWritten, "A take of " + strLength + " was captured.");
    }
    if (take.lFrames > 0) {
        MarkTake(static_cast<std::int32_t>(m_Kind), take);
        m_Book.Add(take);
        return;
    }
    std::error_code ignored;
    std::filesystem::remove(take.strFile, ignored);
}

void CPlugIn::ServeReturn() {
    m_Player.Collect();
    std::optional<CReturn> wanted;
    {
        const std::lock_guard lock(m_ReturnLock);
        wanted = std::exchange(m_Wanted, std::nullopt);
    }
    if (!wanted) return;
    try {
        LoadReturn(*wanted);
    } catch (std::exception const& failure) {
        Report(PlugInResult::ReturnRefused, failure.what());
    }
}

void CPlugIn::LoadReturn(CReturn const& wanted) {
    auto audio = LoadReturnedAudio(wanted.strFile, wanted.lPosition, m_nChannels, m_nSampleRate);
    std::string strFile = wanted.strFile;
    if (wanted.fCopy) {
        // The host's file belongs to the host: it replaces and removes it as it likes.
        strFile = m_Directory.NewFile("Return");
        if (strFile.empty()) throw std::runtime_error("The capture directory cannot be written.");
        std::filesystem::copy_file(wanted.strFile, strFile,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    m_Book.SetReturned(strFile, wanted.lPosition);
    m_fHasReturned = true;
    m_Player.Give(std::move(audio));
    Report(PlugInResult::Returned, ReturnedText());
}

void CPlugIn::ServeWindow() {
    while (CWindowOrder const* order = m_Orders.Front()) {
        m_Window.Order(*order);
        m_Orders.Drop();
        m_fNotesByMessage = true;
    }
    m_Window.Serve();
    while (m_fNotesByMessage && m_Notes.Room() > 0) {
        const std::optional<CWindowNote> note = m_Window.TakeNote();
        if (!note) break;
        m_Notes.Put(*note);
    }
}

void CPlugIn::ServeLink() {
    // The control is the workstation's; what the user picks in the window arrives by it too.
    const std::int32_t nTrack = m_nTrackPort.exchange(-1);
    if (nTrack >= 0) m_Book.SetTrack(nTrack);
    if (const std::optional<CLinkOutcome> outcome = m_Sender.TakeOutcome()) Apply(*outcome);
    if (!m_Sender.IsIdle() || HasView() || Milliseconds() < m_lNextTry) return;

    CLinkJob job = Job(PickTake());
    m_Sending = job.take;
    if (m_Sending) {
        WarnOf(job);
    } else {
        if (!PickReturnRequest(&job.mode)) return;
        const std::optional<CTake> last = m_Book.Last();
        job.lPosition = last ? last->lPosition : 0;
    }
    m_Sender.Start(job);
}

// Before anything is cleared, and once for a take that waits for the host.
void CPlugIn::WarnOf(CLinkJob const& job) {
    const std::string strWhy =
        WhyNotAligned(m_Kind, job.nTrack, job.guide, *job.take, m_nSampleRate);
    if (strWhy.empty() || m_strWarnedOf == job.take->strFile) return;
    m_strWarnedOf = job.take->strFile;
    Report(PlugInResult::NotAligned, strWhy);
}

void CPlugIn::Apply(CLinkOutcome const& outcome) {
    if (outcome.result == PlugInResult::Returned) {
        SetReturned(outcome.strFile, outcome.lPosition);
        return;
    }
    if (m_Sending && outcome.result == PlugInResult::NoHost) {
        TakePutBack(outcome.fate);
        m_lNextTry = Milliseconds() + kRetryEvery;
        if (Status().strText == outcome.strText) return;
    } else if (m_Sending) {
        TakeHandled(outcome.nTrack);
    }
    const bool fDone = outcome.result == PlugInResult::HandedOver && outcome.strText.empty();
    if (fDone && m_Sending) {
        Report(HandedOverResult(*m_Sending), HandedOverText(*m_Sending, m_nSampleRate));
    } else {
        Report(outcome.result, outcome.strText);
    }
}
