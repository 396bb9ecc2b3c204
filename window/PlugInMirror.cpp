#include "window/PlugInMirror.h"

#include <utility>

namespace {

constexpr int kBeginTime = 5000;

std::optional<CTake> TakeAt(CExtentRecord const& extent) {
    if (extent.lFrames == 0) return std::nullopt;
    CTake take;
    take.lPosition = extent.lPosition;
    take.lFrames = extent.lFrames;
    return take;
}

}  // namespace

bool CPlugInMirror::Begin() {
    CAnyRecord record;
    if (!m_Socket.WaitFor(kBeginTime)) return false;
    const std::optional<std::size_t> nSize = m_Socket.Receive(&record, sizeof(record));
    if (nSize != sizeof(COpenRecord) || record.head.nVersion != kWindowVersion ||
        record.head.record != WindowRecord::Open) {
        // Whatever this says, its version tells.
        SayClosed();
        return false;
    }
    m_Opened = record.open;
    m_fAsked = true;
    while (m_fAsked) {
        if (!m_Socket.WaitFor(kBeginTime) || !Hear()) return false;
    }
    return true;
}

bool CPlugInMirror::Hear() {
    CAnyRecord record;
    while (const std::optional<std::size_t> nSize = m_Socket.Receive(&record, sizeof(record))) {
        if (*nSize < sizeof(CRecordHead)) continue;
        if (record.head.record == WindowRecord::Raise) m_fRaise = true;
        if (record.head.record == WindowRecord::State && *nSize == sizeof(CStateRecord)) {
            Take(record.state);
        }
    }
    return m_Socket.IsOpen();
}

// What the user has just set is not undone by what was said before it arrived.
void CPlugInMirror::Take(CStateRecord const& state) {
    m_fAsked = false;
    if (state.nTrack != m_State.nTrack) m_nTrack = state.nTrack;
    if (state.nReturn >= 0) m_nReturn = state.nReturn;
    m_State = state;
}

bool CPlugInMirror::PickRaise() {
    return std::exchange(m_fRaise, false);
}

void CPlugInMirror::ViewTurned() {
    if (std::exchange(m_fAsked, true)) return;
    CTurnRecord turn{};
    turn.fWantsTake = std::exchange(m_fWantsTake, false);
    turn.fWantsReturn = std::exchange(m_fWantsReturn, false);
    Send(turn);
}

void CPlugInMirror::SetControl(PlugInPort port, float value) {
    CControlRecord control{};
    control.nPort = port;
    control.value = value;
    Send(control);
}

void CPlugInMirror::SayClosed() {
    Send(CClosedRecord{});
}

std::optional<CTake> CPlugInMirror::PickTake() {
    if (m_State.nTake == 0 || m_State.nTake == m_nPicked) {
        m_fWantsTake = true;
        return std::nullopt;
    }
    m_nPicked = m_State.nTake;
    std::optional<CTake> take = TakeAt(m_State.take);
    take->strFile = m_State.file.Get();
    take->end = static_cast<TakeEnd>(m_State.nTakeEnd);
    take->fReplaces = m_State.fTakeReplaces != 0;
    take->fMayBeThere = m_State.fTakeMayBeThere != 0;
    return take;
}

void CPlugInMirror::TakeHandled(std::int32_t nTrack) {
    CTakeDoneRecord done{};
    done.nTake = m_nPicked;
    done.nTrack = nTrack;
    Send(done);
}

void CPlugInMirror::TakePutBack(TakeFate /*fate*/) {
    CTakeDoneRecord done{};
    done.nTake = m_nPicked;
    done.fPutBack = 1;
    Send(done);
}

std::optional<CTake> CPlugInMirror::LastTakeOn(std::int32_t nTrack) const {
    if (nTrack < 0 || nTrack > 1) return std::nullopt;
    return TakeAt(m_Opened.known[nTrack]);
}

std::optional<CGuide> CPlugInMirror::Guide() const {
    const std::optional<CTake> take = TakeAt(m_State.guide);
    if (!take) return std::nullopt;
    return CGuide{*take, m_State.lGuideAge};
}

std::optional<CTake> CPlugInMirror::LastTake() const {
    return TakeAt(m_State.last);
}

void CPlugInMirror::SetTrack(std::int32_t nTrack) {
    m_nTrack = nTrack;
    SetControl(portTrack, static_cast<float>(nTrack));
}

bool CPlugInMirror::PickReturnRequest(ReturnMode* mode) {
    const std::int32_t nReturn = std::exchange(m_nReturn, -1);
    m_fWantsReturn = nReturn < 0;
    if (nReturn >= 0) *mode = static_cast<ReturnMode>(nReturn);
    return nReturn >= 0;
}

void CPlugInMirror::SetReturned(std::string const& strFile, std::int64_t lPosition) {
    CReturnedRecord returned{};
    returned.lPosition = lPosition;
    returned.file.Set(strFile);
    Send(returned);
}

CPlugInStatus CPlugInMirror::Status() const {
    return {static_cast<PlugInResult>(m_State.nResult), m_State.text.Get(), m_State.nReport};
}

void CPlugInMirror::Report(PlugInResult result, std::string const& strText) {
    CReportRecord report{};
    report.nResult = static_cast<std::int32_t>(result);
    report.text.Set(strText);
    Send(report);
}

CPlugInActivity CPlugInMirror::Activity() const {
    CPlugInActivity activity;
    activity.fCapture = m_State.fCapture != 0;
    activity.fReturn = m_State.fReturn != 0;
    activity.mode = m_State.fExportOnly ? ReturnMode::Export : ReturnMode::RenderAndExport;
    activity.fCapturing = m_State.fCapturing != 0;
    activity.lTakeFrames = m_State.lTakeFrames;
    activity.fHasReturned = m_State.fHasReturned != 0;
    return activity;
}
