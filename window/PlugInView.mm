#import "window/PlugInView.h"

#include <cstring>

#include "Source/Notifications.h"

CPlugInView::CPlugInView(PlugInKind kind)
    : m_controller(CPlugInBundle::Shared().MakeController(kind)) {}

CPlugInView::~CPlugInView() {
    [m_controller release];
}

std::int32_t CPlugInView::CheckHost() {
    [m_controller CheckHost];
    return [m_controller CurrentHost];
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
    return [m_controller LastError];
}

void CPlugInView::Show(std::string const& strText) {
    [m_controller ShowError:strText.c_str()];
}

std::optional<std::int32_t> CPlugInView::Track() const {
    const std::int32_t nTrack = [m_controller ChosenTrack];
    if (nTrack < 0) return std::nullopt;
    return nTrack;
}

void CPlugInView::ChooseTrack(std::int32_t nTrack) {
    [m_controller ChooseTrack:nTrack];
}

void CPlugInView::FetchTracks() {
    [m_controller FetchTracks];
}

void const* CPlugInView::TrackList() const {
    return [m_controller TrackList];
}

void CPlugInView::Remember(std::int32_t nTrack, CTake const& take) {
    [m_controller RememberTakeOnTrack:nTrack
                                Start:take.lPosition
                                  End:take.lPosition + take.lFrames];
}

void CPlugInView::Notify(std::int32_t nType, void* pRecord, std::uint32_t nSize) {
    [m_controller NotificationReceived:nType Data:pRecord DataSize:nSize];
}
