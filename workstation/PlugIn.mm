#import "workstation/PlugIn.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "FileIO/FileName.h"
#include "Source/Notifications.h"
#import "Source/TavarinProLink_ViewController.h"
#import "Source/TavarinProLink_ViewControllerFactory.h"
#include "workstation/RecordText.h"

namespace {

// By name, because this program is not linked with the bundle and so does not know where in a view
// its fields are.
id Field(id view, NSString* name) {
    return [view valueForKey:name];
}

}  // namespace

CPlugInBundle::CPlugInBundle(std::string const& strPath)
    : m_bundle([[NSBundle bundleWithPath:[NSString stringWithUTF8String:strPath.c_str()]] retain]),
      m_factory(nil) {
    if (![m_bundle load]) throw std::runtime_error(strPath + " is no bundle that loads");
    m_factory = [[[m_bundle principalClass] alloc] init];
    if (m_factory == nil) throw std::runtime_error(strPath + " has no factory");
}

CPlugInBundle::~CPlugInBundle() {
    [m_factory release];
    [m_bundle release];
}

CPlugInController* CPlugInBundle::MakeController(std::string const& strKind) const {
    TavarinProLink_ViewControllerFactory* factory = m_factory;
    id controller = nil;
    if (strKind == "link") {
        controller = [factory LinkViewControllerFromBundle:m_bundle
                                          effectParameters:nullptr
                                                controller:nullptr];
    } else if (strKind == "apt") {
        controller = [factory APTLinkViewControllerFromBundle:m_bundle
                                             effectParameters:nullptr
                                                   controller:nullptr];
    } else {
        controller = [factory DoublerLinkViewControllerFromBundle:m_bundle
                                                 effectParameters:nullptr
                                                       controller:nullptr];
    }
    return controller;
}

CPlugIn::CPlugIn(CPlugInBundle const& bundle, std::string strKind, LogFunction record)
    : m_strKind(std::move(strKind)),
      m_record(std::move(record)),
      m_controller(bundle.MakeController(m_strKind)) {}

CPlugIn::~CPlugIn() {
    [m_controller release];
}

TakeOutcome CPlugIn::Capture(std::string const& strFile, double dPosition, double dEnd) {
    if (m_client.GetCurrentTANHost() < 1) return TakeOutcome::Waits;
    paramPostAnalyze record{};
    if (strFile.size() >= sizeof(record.szFilePath)) {
        throw std::runtime_error("the path is too long for a record: " + strFile);
    }
    std::memcpy(record.szFilePath, strFile.c_str(), strFile.size() + 1);
    record.dFilePosition = dPosition;
    record.dRegionEnd = dEnd;
    // The view may choose another track for what comes next.
    const int nTrack = Track();
    Notify(notifyPostAnalyze, &record, sizeof(record));
    if (!std::filesystem::exists(strFile)) return TakeOutcome::Duplicate;
    CFileName file(&strFile);
    const bool fHasIt =
        m_client.CheckDuplicateRegion(m_strKind != "link", nTrack, &file, dPosition, 0, dEnd);
    // The Link view makes nothing of a take, and shows nothing of what its client says.
    const bool fFailed = m_strKind != "link" && !ErrorText().empty();
    if (fHasIt) return fFailed ? TakeOutcome::ProcessFailed : TakeOutcome::HandedOver;
    return m_client.GetCurrentTANHost() < 1 ? TakeOutcome::Waits : TakeOutcome::Refused;
}

bool CPlugIn::TakesGuide() const {
    return m_strKind == "apt" && [Field(m_controller, @"m_fGuideSelected") boolValue];
}

int CPlugIn::Track() const {
    if (m_strKind == "apt") return TakesGuide() ? 0 : 1;
    if (m_strKind != "link") return 0;
    NSArrayController* list = Field(m_controller, @"m_TracksArray");
    const NSUInteger nTrack = [list selectionIndex];
    return nTrack == NSNotFound ? 0 : static_cast<int>(nTrack);
}

std::string CPlugIn::ErrorText() const {
    NSString* text = [(NSTextField*)Field(m_controller, @"m_textLastError") stringValue];
    return text == nil ? "" : [text UTF8String];
}

std::string CPlugIn::WhyNot(const char* szOtherwise) {
    const std::string strShown = m_strKind == "link" ? "" : ErrorText();
    if (!strShown.empty()) return strShown;
    if (m_client.GetCurrentTANHost() < 1) return m_client.m_strLastError;
    return szOtherwise;
}

void CPlugIn::RequireHost() {
    if (m_client.GetCurrentTANHost() < 1) throw std::runtime_error(m_client.m_strLastError);
}

void CPlugIn::RequireAPT() const {
    if (m_strKind != "apt") throw std::runtime_error("only the APT view has this; name it first");
}

std::optional<std::string> CPlugIn::Export(int nSampleRate) {
    paramExportSelectedRegion record{};
    record.nSampleRate = nSampleRate;
    Notify(notifyExportSelectedRegion, &record, sizeof(record));
    if (!record.fResult) return std::nullopt;
    return std::string(record.szFilePath, strnlen(record.szFilePath, sizeof(record.szFilePath)));
}

std::optional<CPlugIn::CSpan> CPlugIn::Render(int nSampleRate) {
    paramRenderSelectedRegion record{};
    record.nSampleRate = nSampleRate;
    Notify(notifyRenderSelectedRegion, &record, sizeof(record));
    if (!record.fResult) return std::nullopt;
    return CSpan{record.lStart, record.lEnd};
}

void CPlugIn::Print(std::string const& strText) {
    RequireHost();
    std::string strRecord = strText;
    Notify(notifyPrint, strRecord.data(), static_cast<std::uint32_t>(strRecord.size() + 1));
}

std::int64_t CPlugIn::AskUpdateCount() {
    RequireHost();
    paramUpdateCount record{};
    Notify(notifyUpdateCount, &record, sizeof(record));
    return record.lUpdateCount;
}

void CPlugIn::ChooseTake(bool fGuide) {
    RequireAPT();
    [Field(m_controller, fGuide ? @"m_btnGuide" : @"m_btnDub") performClick:nil];
    if (TakesGuide() != fGuide) throw std::runtime_error("the view's button did nothing");
}

void CPlugIn::SetAutoSwitch(bool fOn) {
    RequireAPT();
    const auto isOn = [this] { return [Field(m_controller, @"m_fAutoSwitch") boolValue] != NO; };
    if (isOn() != fOn) [Field(m_controller, @"m_btnAutoTrackSwitch") performClick:nil];
    if (isOn() != fOn) throw std::runtime_error("the view's button did nothing");
}

std::string CPlugIn::ChooseTrack(int nTrack) {
    if (m_strKind != "link") throw std::runtime_error("only the Link view has tracks to choose");
    RequireHost();
    [(TavarinProLink_ViewController*)m_controller FillTrackList:nil];
    NSArray* tracks = Field(m_controller, @"m_Tracks");
    const auto nTracks = static_cast<int>([tracks count]);
    if (nTrack < 0 || nTrack >= nTracks) {
        throw std::runtime_error("there is no track " + std::to_string(nTrack) + "; the host has " +
                                 std::to_string(nTracks) + ", from 0");
    }
    NSArrayController* list = Field(m_controller, @"m_TracksArray");
    [list setSelectionIndex:nTrack];
    NSString* name = [[tracks objectAtIndex:nTrack] valueForKey:@"Name"];
    return name == nil ? "" : [name UTF8String];
}

void CPlugIn::Notify(std::int32_t nType, void* pRecord, std::uint32_t nSize) {
    const std::string strName = NotificationName(nType);
    const std::string strBefore = RecordText(nType, pRecord);
    m_record(m_strKind + "  " + strName + "  before  " + strBefore);
    const std::int32_t nResult = [m_controller NotificationReceived:nType
                                                               Data:pRecord
                                                           DataSize:nSize];
    const std::string strAfter = RecordText(nType, pRecord);
    m_record(m_strKind + "  " + strName + "  after   " +
             (strAfter == strBefore ? "(unchanged)" : strAfter) + "  returned " +
             std::to_string(nResult));
}
