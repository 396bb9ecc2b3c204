#include "window/Schedule.h"

#include <sys/stat.h>

#include "plugin/GuideText.h"
#include "plugin/TakeText.h"
#import "window/PlugInView.h"

namespace {

constexpr std::chrono::milliseconds kCheckHostEvery{500};
constexpr std::int32_t kGuideTrack = 0;
constexpr std::int32_t kDubTrack = 1;
// Of a view that was told of no take.
constexpr std::int64_t kNoPosition = -1;

bool IsThere(std::string const& strFile) {
    struct stat status {};
    return stat(strFile.c_str(), &status) == 0;
}

}  // namespace

CSchedule::CSchedule(CPlugInAccess& plugIn, CPlugInView& view)
    : m_PlugIn(plugIn),
      m_View(view),
      m_NextCheck(Clock::now()),
      m_nWantedTrack(plugIn.Track()),
      m_nSeenReport(plugIn.Status().nSerial) {
    for (const std::int32_t nTrack : {0, 1}) {
        if (const std::optional<CTake> take = plugIn.LastTakeOn(nTrack)) {
            m_View.Remember(nTrack, *take);
        }
    }
    m_View.ChooseTrack(m_nWantedTrack);
    if (const std::optional<std::int32_t> nTrack = m_View.Track()) m_nSeenTrack = *nTrack;
    m_pSeenList = m_View.TrackList();
}

void CSchedule::Turn() {
    m_PlugIn.ViewTurned();
    FollowTrack();
    if (!CheckHost() && !HandOverTake()) Fetch();
    ShowReport();
}

bool CSchedule::CheckHost() {
    if (m_fListDue) {
        m_fListDue = false;
        m_View.FetchTracks();
        return true;
    }
    if (Clock::now() < m_NextCheck) return false;
    m_NextCheck = Clock::now() + kCheckHostEvery;
    const std::int32_t nHost = m_View.CheckHost();
    m_fListDue = nHost != m_nHost && nHost > 0;
    if (nHost > 0) m_fSaidWaiting = false;
    m_nHost = nHost;
    return true;
}

bool CSchedule::HandOverTake() {
    if (m_nHost < 1 && m_PlugIn.IsTakeWaiting() && !m_fSaidWaiting) {
        m_PlugIn.Report(PlugInResult::NoHost, "A take waits for the host: " + m_View.ErrorText());
        m_nSeenReport = m_PlugIn.Status().nSerial;
        m_fSaidWaiting = true;
    }
    if (m_nHost < 1) return false;
    const std::optional<CTake> take = m_PlugIn.PickTake();
    if (!take) return false;
    const std::int32_t nTrack = m_View.Track().value_or(0);
    const std::string strWhy = Prepare(*take, nTrack);
    m_View.Capture(*take);
    const std::string strError = m_View.ErrorText();
    const bool fWasThere = take->fMayBeThere && !IsThere(take->strFile);
    if (strError.empty() || fWasThere) {
        // Neither that it was there already nor an older trouble is to stand in the view.
        if (fWasThere || m_fShowsReport) m_View.Show("");
        m_fShowsReport = false;
        m_PlugIn.TakeHandled(nTrack);
        ReportDelivered(*take, strWhy);
    } else if (!IsThere(take->strFile)) {
        m_PlugIn.TakeHandled(-1);
        m_PlugIn.Report(PlugInResult::Duplicate, strError);
    } else if (m_View.CheckHost() < 1) {
        m_PlugIn.TakePutBack(TakeFate::Unknown);
        m_nHost = -1;
    } else {
        m_PlugIn.TakeHandled(-1);
        m_PlugIn.Report(PlugInResult::HostRefused, strError);
    }
    // The view shows by itself what the host said.
    m_nSeenReport = m_PlugIn.Status().nSerial;
    return true;
}

// The guide may be another plug-in's, captured since the view was made. Why a dub cannot be aligned
// with it is said before the view clears anything, and the view has no guide then. Empty when it
// can, and for what is no dub.
std::string CSchedule::Prepare(CTake const& take, std::int32_t nTrack) {
    if (m_PlugIn.Kind() != PlugInKind::APT || nTrack != kDubTrack) return {};
    std::optional<CTake> known;
    if (const std::optional<CGuide> guide = m_PlugIn.Guide()) known = guide->take;
    const std::string strWhy =
        WhyNotAligned(PlugInKind::APT, nTrack, known, take, m_PlugIn.SampleRate());
    if (!strWhy.empty()) {
        known = CTake{};
        known->lPosition = kNoPosition;
        m_PlugIn.Report(PlugInResult::NotAligned, strWhy);
    }
    m_View.Remember(kGuideTrack, *known);
    return strWhy;
}

void CSchedule::ReportDelivered(CTake const& take, std::string const& strWhyNotAligned) {
    const std::string strText = HandedOverText(take, m_PlugIn.SampleRate());
    if (strWhyNotAligned.empty()) {
        m_PlugIn.Report(HandedOverResult(take), strText);
    } else {
        m_PlugIn.Report(PlugInResult::NotAligned, strText + " " + strWhyNotAligned);
    }
}

bool CSchedule::Fetch() {
    if (m_fExportDue) {
        m_fExportDue = false;
        const std::optional<std::string> strFile = m_View.Export(m_PlugIn.SampleRate());
        if (!strFile) {
            RefuseFetch();
        } else {
            m_PlugIn.SetReturned(*strFile, m_lReturnPosition);
        }
        return true;
    }
    ReturnMode mode{};
    if (!m_PlugIn.PickReturnRequest(&mode)) return false;
    const std::optional<CTake> last = m_PlugIn.LastTake();
    m_lReturnPosition = last ? last->lPosition : 0;
    m_fExportDue = true;
    if (mode == ReturnMode::Export) return false;
    const std::optional<std::int64_t> lStart = m_View.Render(m_PlugIn.SampleRate());
    m_fExportDue = lStart.has_value();
    if (m_fExportDue) {
        m_lReturnPosition = *lStart;
    } else {
        RefuseFetch();
    }
    return true;
}

void CSchedule::RefuseFetch() {
    const std::string strError = m_View.ErrorText();
    m_PlugIn.Report(PlugInResult::ReturnRefused,
                    strError.empty() ? "The host returned nothing." : strError);
}

void CSchedule::FollowTrack() {
    const std::int32_t nSet = m_PlugIn.Track();
    const std::optional<std::int32_t> nShown = m_View.Track();
    if (!nShown) return;
    // A list that was fetched anew has a selection that nobody chose.
    const bool fOtherList = m_View.TrackList() != m_pSeenList;
    m_pSeenList = m_View.TrackList();
    if (!fOtherList && *nShown != m_nSeenTrack) {
        m_nWantedTrack = *nShown;
        m_PlugIn.SetTrack(m_nWantedTrack);
    } else if (fOtherList || nSet != m_nWantedTrack) {
        m_nWantedTrack = nSet;
        m_View.ChooseTrack(m_nWantedTrack);
    }
    m_nSeenTrack = m_View.Track().value_or(-1);
}

void CSchedule::ShowReport() {
    const CPlugInStatus status = m_PlugIn.Status();
    if (status.nSerial == m_nSeenReport) return;
    m_nSeenReport = status.nSerial;
    constexpr PlugInResult kShown[] = {PlugInResult::Overflow, PlugInResult::DiskFailed,
                                       PlugInResult::ReturnRefused, PlugInResult::StateUnreadable};
    for (const PlugInResult result : kShown) {
        if (status.result != result) continue;
        m_View.Show(status.strText);
        m_fShowsReport = true;
    }
}
