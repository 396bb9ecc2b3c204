#include "plugin/WindowProcess.h"

#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

namespace {

/// How long a program may take to end by itself.
constexpr std::chrono::milliseconds kLeavingTime{300};
constexpr std::chrono::milliseconds kStartingTime{15000};
constexpr std::size_t kMostNotes = 256;
constexpr char szNoAnswer[] = "Tavarin Pro does not answer";

char const* OwnTitle(PlugInKind kind) {
    if (kind == PlugInKind::APT) return "Tavarin APT Link";
    return kind == PlugInKind::Link ? "Tavarin Link" : "Tavarin Doubler Link";
}

CExtentRecord Extent(std::optional<CTake> const& take) {
    return take ? CExtentRecord{take->lPosition, take->lFrames} : CExtentRecord{};
}

std::uint32_t NextPlace() {
    static std::atomic<std::uint32_t> nOpened{0};
    return nOpened++;
}

}  // namespace

CWindowProcess::CWindowProcess(CPlugInAccess& plugIn, std::string strProgram)
    : m_PlugIn(plugIn), m_strProgram(std::move(strProgram)) {}

CWindowProcess::~CWindowProcess() {
    End();
}

void CWindowProcess::End() {
    if (!m_pProgram) return;
    m_pProgram->Socket().Close();
    // Its user's settings are to be kept, if it can still keep them.
    for (const auto end = Clock::now() + kLeavingTime;
         Clock::now() < end && !m_pProgram->HasEnded();) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    m_pProgram.reset();
    PutTakeBack();
}

void CWindowProcess::Order(CWindowOrder const& order) {
    if (order.nVersion != kWindowVersion) return;
    const std::lock_guard lock(m_Lock);
    m_Order = order;
    // What an earlier window said is nobody's any more.
    m_Notes.clear();
}

std::optional<CWindowNote> CWindowProcess::TakeNote() {
    const std::lock_guard lock(m_Lock);
    if (m_Notes.empty()) return std::nullopt;
    const CWindowNote note = m_Notes.front();
    m_Notes.pop_front();
    return note;
}

void CWindowProcess::Tell(CWindowNote const& note) {
    const std::lock_guard lock(m_Lock);
    if (m_Notes.size() < kMostNotes) m_Notes.push_back(note);
}

void CWindowProcess::Serve() {
    std::optional<CWindowOrder> order;
    if (!m_fLeaving) {
        const std::lock_guard lock(m_Lock);
        order = std::exchange(m_Order, std::nullopt);
    }
    if (order) Carry(*order);
    if (!m_pProgram) return;
    CAnyRecord record;
    while (const auto nSize = m_pProgram->Socket().Receive(&record, sizeof(record))) {
        Hear(record, *nSize);
    }
    if (m_pProgram->HasEnded()) {
        NoteEnd();
    } else {
        WatchSilence();
    }
}

void CWindowProcess::Carry(CWindowOrder const& order) {
    if (!order.fShow) {
        if (m_pProgram == nullptr) return;
        m_fSaidWhy = true;
        m_fSentAway = true;
        Leave();
        m_pProgram->Socket().Close();
    } else if (m_pProgram == nullptr) {
        Open(order);
    } else {
        const CRaiseRecord raise;
        m_pProgram->Socket().Send(&raise, sizeof(raise));
    }
}

void CWindowProcess::Open(CWindowOrder const& order) {
    m_fSaidWhy = false;
    m_fSentAway = false;
    m_fSaidSilent = false;
    try {
        m_pProgram = std::make_unique<CChildProgram>(m_strProgram);
    } catch (std::system_error const& failure) {
        Fail("The window cannot be opened: " + std::string(failure.what()));
        Tell({1, 0, 0});
        return;
    }
    // Starting takes longer than a turn.
    m_Heard = Clock::now() + kStartingTime - kPatience;
    COpenRecord open{};
    open.nKind = static_cast<std::int32_t>(m_PlugIn.Kind());
    open.nSampleRate = m_PlugIn.SampleRate();
    open.nPlace = NextPlace();
    open.scale = order.scale;
    open.nParent = order.nParent;
    open.nWorkstation = getpid();
    for (const std::int32_t nTrack : {0, 1})
        open.known[nTrack] = Extent(m_PlugIn.LastTakeOn(nTrack));
    const std::string strTitle = order.title.Get();
    open.title.Set(strTitle.empty() ? OwnTitle(m_PlugIn.Kind()) : strTitle);
    m_pProgram->Socket().Send(&open, sizeof(open));
    SendState(nullptr);
}

void CWindowProcess::Hear(CAnyRecord const& record, std::size_t nSize) {
    if (nSize < sizeof(CRecordHead) || record.head.nVersion != kWindowVersion) {
        Fail("The window's program is of another version: " + m_strProgram);
        m_pProgram->Socket().Close();
        return;
    }
    const auto is = [&record, nSize](WindowRecord expected, std::size_t nExpected) {
        return record.head.record == expected && nSize == nExpected;
    };
    if (is(WindowRecord::Turn, sizeof(CTurnRecord))) {
        OnTurn(record.turn);
    } else if (is(WindowRecord::TakeDone, sizeof(CTakeDoneRecord))) {
        OnTakeDone(record.takeDone);
    } else if (is(WindowRecord::Returned, sizeof(CReturnedRecord))) {
        m_PlugIn.SetReturned(record.returned.file.Get(), record.returned.lPosition);
    } else if (is(WindowRecord::Report, sizeof(CReportRecord))) {
        const auto result = static_cast<PlugInResult>(record.report.nResult);
        m_PlugIn.Report(result, record.report.text.Get());
        m_fSaidWhy = m_fSaidWhy || result == PlugInResult::WindowFailed;
    } else if (is(WindowRecord::Control, sizeof(CControlRecord))) {
        if (record.control.nPort == portTrack) {
            m_PlugIn.SetTrack(static_cast<std::int32_t>(record.control.value));
        }
        Tell({0, record.control.nPort, record.control.value});
    } else if (is(WindowRecord::Closed, sizeof(CClosedRecord))) {
        m_fSaidWhy = true;
        Leave();
    }
}

void CWindowProcess::OnTurn(CTurnRecord const& turn) {
    m_Heard = Clock::now();
    m_PlugIn.ViewTurned();
    if (std::exchange(m_fSaidSilent, false) && m_PlugIn.Status().result == PlugInResult::NoAnswer) {
        m_PlugIn.Report(PlugInResult::Ready, "");
    }
    if (turn.fWantsTake && !m_Take) {
        m_Take = m_PlugIn.PickTake();
        if (m_Take) ++m_nTake;
    }
    ReturnMode wanted{};
    const bool fReturn = turn.fWantsReturn && m_PlugIn.PickReturnRequest(&wanted);
    SendState(fReturn ? &wanted : nullptr);
}

void CWindowProcess::OnTakeDone(CTakeDoneRecord const& done) {
    if (!m_Take || done.nTake != m_nTake) return;
    m_Take.reset();
    if (done.fPutBack) {
        m_PlugIn.TakePutBack(TakeFate::Unknown);
    } else {
        m_PlugIn.TakeHandled(done.nTrack);
    }
}

void CWindowProcess::SendState(ReturnMode const* wanted) {
    const CPlugInStatus status = m_PlugIn.Status();
    const CPlugInActivity activity = m_PlugIn.Activity();
    CStateRecord state{};
    state.nReport = status.nSerial;
    state.nResult = static_cast<std::int32_t>(status.result);
    state.text.Set(status.strText);
    state.nTrack = m_PlugIn.Track();
    state.nReturn = wanted == nullptr ? -1 : static_cast<std::int32_t>(*wanted);
    state.fCapture = activity.fCapture;
    state.fReturn = activity.fReturn;
    state.fExportOnly = activity.mode == ReturnMode::Export;
    state.fCapturing = activity.fCapturing;
    state.lTakeFrames = activity.lTakeFrames;
    state.fHasReturned = activity.fHasReturned;
    state.fTakeWaits = m_PlugIn.IsTakeWaiting();
    state.last = Extent(m_PlugIn.LastTake());
    if (const std::optional<CGuide> guide = m_PlugIn.Guide()) {
        state.guide = Extent(guide->take);
        state.lGuideAge = guide->lAge;
    }
    if (m_Take) {
        state.nTake = m_nTake;
        state.take = Extent(m_Take);
        state.nTakeEnd = static_cast<std::int32_t>(m_Take->end);
        state.fTakeReplaces = m_Take->fReplaces;
        state.fTakeMayBeThere = m_Take->fMayBeThere;
        state.file.Set(m_Take->strFile);
    }
    m_pProgram->Socket().Send(&state, sizeof(state));
}

void CWindowProcess::WatchSilence() {
    const auto silence = Clock::now() - m_Heard;
    if (m_fLeaving) {
        if (silence > kLeavingTime) NoteEnd();
    } else if (!m_pProgram->Socket().IsOpen()) {
        Leave();
    } else if (silence > kPatience && !m_fSaidSilent) {
        m_fSaidSilent = true;
        m_PlugIn.Report(PlugInResult::NoAnswer, szNoAnswer);
    }
}

void CWindowProcess::Leave() {
    m_fLeaving = true;
    m_Heard = Clock::now();
}

void CWindowProcess::NoteEnd() {
    m_pProgram.reset();
    m_fLeaving = false;
    PutTakeBack();
    Fail("The window ended by itself. It can be shown again.");
    if (!m_fSentAway) Tell({1, 0, 0});
}

// Whether the host has it, only the window knew.
void CWindowProcess::PutTakeBack() {
    if (std::exchange(m_Take, std::nullopt)) m_PlugIn.TakePutBack(TakeFate::Unknown);
}

void CWindowProcess::Fail(std::string const& strText) {
    if (std::exchange(m_fSaidWhy, true)) return;
    m_PlugIn.Report(PlugInResult::WindowFailed, strText);
}

std::string WindowProgramPath() {
    Dl_info module{};
    if (dladdr(reinterpret_cast<void*>(&WindowProgramPath), &module) == 0) return {};
    // A workstation may have named the module by a path from where it stood.
    return (std::filesystem::absolute(module.dli_fname).parent_path() / "tavarin-view").string();
}
