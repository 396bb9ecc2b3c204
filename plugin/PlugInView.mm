#import "plugin/PlugInView.h"

#include <cstring>

#include "Source/Notifications.h"
#import "Source/TavarinProAPTLink_ViewController.h"
#import "Source/TavarinProDoublerLink_ViewController.h"
#import "Source/TavarinProLink_ViewController.h"

namespace {

TavarinProLink_ViewController* Link(CPlugInController* controller) {
    return (TavarinProLink_ViewController*)controller;
}

TavarinProAPTLink_ViewController* APT(CPlugInController* controller) {
    return (TavarinProAPTLink_ViewController*)controller;
}

TavarinProDoublerLink_ViewController* Doubler(CPlugInController* controller) {
    return (TavarinProDoublerLink_ViewController*)controller;
}

CTANClientInterProcess& Client(PlugInKind kind, CPlugInController* controller) {
    if (kind == PlugInKind::Link) return Link(controller)->m_Script;
    if (kind == PlugInKind::APT) return APT(controller)->m_Script;
    return Doubler(controller)->m_Script;
}

std::int32_t Host(PlugInKind kind, CPlugInController* controller) {
    if (kind == PlugInKind::Link) return Link(controller)->m_nCurrentHost;
    if (kind == PlugInKind::APT) return APT(controller)->m_nCurrentHost;
    return Doubler(controller)->m_nCurrentHost;
}

void Place(std::optional<CTake> const& take, std::int64_t* lStart, std::int64_t* lEnd) {
    if (!take) return;
    *lStart = take->lPosition;
    *lEnd = take->lPosition + take->lFrames;
}

}  // namespace

CPlugInView::CPlugInView(PlugInKind kind)
    : m_Kind(kind), m_controller(CPlugInBundle::Shared().MakeController(kind)) {}

CPlugInView::~CPlugInView() {
    [m_controller release];
}

std::int32_t CPlugInView::CheckHost() {
    [m_controller CheckHost];
    return Host(m_Kind, m_controller);
}

void CPlugInView::Capture(CTake const& take) {
    paramPostAnalyze record{};
    // A path that fills the record has no end in it, and the view refuses it.
    take.strFile.copy(record.szFilePath, sizeof(record.szFilePath));
    record.dFilePosition = static_cast<double>(take.lPosition);
    record.dRegionEnd = static_cast<double>(take.lFrames);
    Notify(notifyPostAnalyze, &record, sizeof(record));
}

std::optional<std::int64_t> CPlugInView::Render(int nSampleRate) {
    paramRenderSelectedRegion record{};
    record.nSampleRate = nSampleRate;
    Notify(notifyRenderSelectedRegion, &record, sizeof(record));
    if (!record.fResult) return std::nullopt;
    return record.lStart;
}

std::optional<std::string> CPlugInView::Export(int nSampleRate) {
    paramExportSelectedRegion record{};
    record.nSampleRate = nSampleRate;
    Notify(notifyExportSelectedRegion, &record, sizeof(record));
    if (!record.fResult) return std::nullopt;
    return std::string(record.szFilePath, strnlen(record.szFilePath, sizeof(record.szFilePath)));
}

std::string CPlugInView::ErrorText() const {
    return Client(m_Kind, m_controller).m_strLastError;
}

void CPlugInView::Show(std::string const& strText) {
    CTANClientInterProcess& client = Client(m_Kind, m_controller);
    client.m_strLastError = strText;
    client.m_strAdvice.clear();
    [m_controller SetTextFields];
}

std::optional<std::int32_t> CPlugInView::Track() const {
    if (m_Kind == PlugInKind::APT) return APT(m_controller)->m_fGuideSelected ? 0 : 1;
    if (m_Kind == PlugInKind::Doubler || Host(m_Kind, m_controller) < 1) return std::nullopt;
    const auto nTrack =
        static_cast<std::int32_t>([Link(m_controller)->m_TracksArray selectionIndex]);
    if (nTrack < 0) return std::nullopt;
    return nTrack;
}

void CPlugInView::ChooseTrack(std::int32_t nTrack) {
    if (m_Kind == PlugInKind::APT) {
        APT(m_controller)->m_fGuideSelected = nTrack == 0;
        [APT(m_controller) SetActiveTrack];
    } else if (m_Kind == PlugInKind::Link) {
        const auto nTracks = static_cast<std::int32_t>([Link(m_controller)->m_Tracks count]);
        if (nTrack < nTracks) [Link(m_controller)->m_TracksArray setSelectionIndex:nTrack];
    }
}

void CPlugInView::FetchTracks() {
    if (m_Kind == PlugInKind::Link) [Link(m_controller) FillTrackList:nil];
}

void const* CPlugInView::TrackList() const {
    return m_Kind == PlugInKind::Link ? Link(m_controller)->m_Tracks : nil;
}

void CPlugInView::Remember(std::optional<CTake> const& first, std::optional<CTake> const& second) {
    if (m_Kind == PlugInKind::APT) {
        auto* view = APT(m_controller);
        Place(first, &view->m_lGuideStart, &view->m_lGuideEnd);
        Place(second, &view->m_lDubStart, &view->m_lDubEnd);
    } else if (m_Kind == PlugInKind::Doubler) {
        auto* view = Doubler(m_controller);
        Place(first, &view->m_lInputStart, &view->m_lInputEnd);
    }
}

void CPlugInView::Notify(std::int32_t nType, void* pRecord, std::uint32_t nSize) {
    [m_controller NotificationReceived:nType Data:pRecord DataSize:nSize];
}
