#import "Source/ViewHelpers.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "FileIO/FileName.h"
#include "platform/Assertion.h"

namespace {

struct CRecordSize {
    std::int32_t nType;
    std::size_t nSize;
    const char* szCondition;
};

constexpr CRecordSize kRecordSizes[] = {
    {notifyPostAnalyze, sizeof(paramPostAnalyze),
     "iNotificationDataSize == sizeof(paramPostAnalyze)"},
    {notifyExportSelectedRegion, sizeof(paramExportSelectedRegion),
     "iNotificationDataSize == sizeof(paramExportSelectedRegion)"},
    {notifyRenderSelectedRegion, sizeof(paramRenderSelectedRegion),
     "iNotificationDataSize == sizeof(paramRenderSelectedRegion)"},
    // The record is an integer; plug-ins know the condition by this name.
    {notifyUpdateCount, sizeof(paramUpdateCount), "iNotificationDataSize == sizeof(long *)"},
};

/// The plug-in reads its answers from the record that it passed as read-only.
template <typename Record>
Record& RecordToAnswer(void const* pNotificationData) {
    return *static_cast<Record*>(const_cast<void*>(pNotificationData));
}

void SetText(NSTextField* field, std::string const& strText) {
    NSString* text = TextFromHost(strText);
    [field setStringValue:text];
    [field setToolTip:strText.empty() ? nil : text];
}

std::int64_t Truncated(double dPosition) {
    constexpr double kLimit = 9223372036854775808.0;
    if (std::isnan(dPosition)) return 0;
    if (dPosition >= kLimit) return std::numeric_limits<std::int64_t>::max();
    if (dPosition < -kLimit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(dPosition);
}

void RefusePath(CTANClientInterProcess& script, const char* szFile) {
    script.m_strLastError = std::string("Error - The path of the ") + szFile + " file is too long.";
    script.m_strAdvice = "Use a folder with a shorter path.";
}

Answer Export(CTANClientInterProcess& script, bool fAudioSuite, paramExportSelectedRegion& record) {
    CFileName file;
    record.fResult = script.ExportSelectedRegion(fAudioSuite, record.nSampleRate, &file);
    if (!record.fResult) return Answer::Answered;
    const std::string strPath = file.GetFullPathString();
    if (strPath.size() >= sizeof(record.szFilePath)) {
        record.fResult = false;
        file.FileDelete();
        RefusePath(script, "exported");
        return Answer::Refused;
    }
    std::memcpy(record.szFilePath, strPath.c_str(), strPath.size() + 1);
    return Answer::Answered;
}

void Render(CTANClientInterProcess& script, bool fAudioSuite, paramRenderSelectedRegion& record) {
    record.fResult =
        script.RenderSelectedRegion(fAudioSuite, record.nSampleRate, &record.lStart, &record.lEnd);
}

}  // namespace

NSString* TextFromHost(std::string const& strText) {
    NSString* text = [NSString stringWithUTF8String:strText.c_str()];
    if (text != nil) return text;
    return [[[NSString alloc] initWithBytes:strText.data()
                                     length:strText.size()
                                   encoding:NSISOLatin1StringEncoding] autorelease];
}

void ShowTexts(CTANClientInterProcess const& script, NSTextField* textLastError,
               NSTextField* textAdvice) {
    SetText(textAdvice, script.m_strAdvice);
    SetText(textLastError, script.m_strLastError);
}

void ShowTextsOrLogo(CTANClientInterProcess const& script, NSTextField* textLastError,
                     NSTextField* textAdvice, NSImageView* imageLogo) {
    ShowTexts(script, textLastError, textAdvice);
    const bool fNothingToSay = script.m_strLastError.empty() && script.m_strAdvice.empty();
    [textAdvice setHidden:fNothingToSay];
    [textLastError setHidden:fNothingToSay];
    [imageLogo setHidden:!fNothingToSay];
}

void LetGo(NSControl* control) {
    [control setTarget:nil];
    [control setAction:NULL];
}

bool HasHostChanged(CTANClientInterProcess& script, std::int32_t* pnCurrentHost) {
    const std::int32_t nHost = script.GetCurrentTANHost();
    if (nHost == *pnCurrentHost) return false;
    *pnCurrentHost = nHost;
    return true;
}

void RequireRecord(std::int32_t iNotificationType, void const* pNotificationData,
                   std::uint32_t iNotificationDataSize) {
    if (iNotificationType == notifyPrint) TAVARIN_REQUIRE(pNotificationData != nullptr);
    for (CRecordSize const& record : kRecordSizes) {
        if (record.nType != iNotificationType) continue;
        if (record.nSize != iNotificationDataSize) {
            AssertionFailed(record.szCondition, __FILE__, __LINE__);
        }
        TAVARIN_REQUIRE(pNotificationData != nullptr);
    }
}

bool HasPath(CTANClientInterProcess& script, paramPostAnalyze const& capture) {
    if (std::memchr(capture.szFilePath, 0, sizeof(capture.szFilePath)) != nullptr) return true;
    RefusePath(script, "captured");
    return false;
}

bool HandOverCapture(CTANClientInterProcess& script, bool fAudioSuite, int nTrack,
                     paramPostAnalyze const& capture) {
    CFileName file(capture.szFilePath);
    if (script.CheckDuplicateRegion(fAudioSuite, nTrack, &file, capture.dFilePosition,
                                    capture.dRegionStart, capture.dRegionEnd)) {
        file.FileDelete();
        return false;
    }
    constexpr int kEveryChannel = 0;
    script.SendFile(fAudioSuite, nTrack, &file, capture.dFilePosition, capture.dRegionStart,
                    capture.dRegionEnd, kEveryChannel);
    return true;
}

std::int64_t CaptureStart(paramPostAnalyze const& capture) {
    return Truncated(capture.dFilePosition + capture.dRegionStart);
}

std::int64_t CaptureEnd(paramPostAnalyze const& capture) {
    return Truncated(capture.dFilePosition + capture.dRegionEnd);
}

Answer AnswerNotification(CTANClientInterProcess& script, bool fAudioSuite,
                          std::int32_t iNotificationType, void const* pNotificationData) {
    switch (iNotificationType) {
        case notifyExportSelectedRegion:
            return Export(script, fAudioSuite,
                          RecordToAnswer<paramExportSelectedRegion>(pNotificationData));
        case notifyRenderSelectedRegion:
            Render(script, fAudioSuite,
                   RecordToAnswer<paramRenderSelectedRegion>(pNotificationData));
            return Answer::Answered;
        case notifyUpdateCount:
            RecordToAnswer<paramUpdateCount>(pNotificationData).lUpdateCount =
                script.GetUpdateCount();
            return Answer::Answered;
        case notifyPrint:
            script.PrintToTavarin(static_cast<const char*>(pNotificationData));
            return Answer::Silent;
        default:
            return Answer::Silent;
    }
}
