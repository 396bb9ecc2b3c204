#include <algorithm>
#include <iterator>

#include "FileIO/FileName.h"
#include "link/CommandTexts.h"
#include "link/SampleRateWarning.h"
#include "link/ScriptWriter.h"
#include "link/TANClientInterProcess.h"
#include "platform/NumberText.h"

namespace {

constexpr char strDuplicate[] = "Same audio captured previously.";
constexpr char strCaptureCancelled[] = "This capture has been cancelled";

// What the host's reason codes mean, by code.
constexpr const char* kReasons[] = {
    "No Tavarin Pro session is selected",
    "No Tavarin Pro region is selected",
    "No Tavarin Pro Process exists",
};

std::string EscapedPath(CFileName const& file) {
    return EscapeBackstroke(file.GetFullPath());
}

// The bits of the mask as a list of channel numbers in braces.
std::string ChannelList(int channelMask) {
    CScriptWriter list;
    list << "{";
    for (int nBit = 0; (channelMask >> nBit) != 0; ++nBit) {
        if (!((channelMask >> nBit) & 1)) continue;
        list << nBit;
        if ((channelMask >> nBit) > 1) list << ",";
    }
    list << "}";
    return list.Text();
}

}  // namespace

int CTANClientInterProcess::ListTracksWithTimeout(bool fAudioSuite,
                                                  std::vector<std::string>* tracks, int timeoutMs) {
    const int id = GetCurrentTANHost();
    if (id < 1) return -1;

    std::string strRequest(szListTracks.For(fAudioSuite));
    std::string strReply;
    if (SendTANMessage(id, strRequest, strReply, timeoutMs) != kExchangeDone) return 0;

    std::vector<std::string> values;
    SplitResult(strReply, &values);
    if (values.size() < 2) {
        m_strLastError = strNoSessionSelected;
        return 0;
    }
    tracks->insert(tracks->end(), std::make_move_iterator(values.begin() + 1),
                   std::make_move_iterator(values.end()));
    return 0;
}

bool CTANClientInterProcess::CheckDuplicateRegion(bool fAudioSuite, int idTrack, CFileName* file,
                                                  double first, double second, double third) {
    CScriptWriter script;
    script << szOpenDocumentTrue.For(fAudioSuite)                                                //
           << "idTrack = GetTrackID(" << idTrack << ")\n"                                        //
           << "nDuplicate = CheckForDuplicateRegion(idTrack, \"" << EscapedPath(*file) << "\","  //
           << TruncateToSamples(first) << "," << TruncateToSamples(second) << ","                //
           << TruncateToSamples(third) << ")\n"                                                  //
           << "print(nDuplicate)\n"                                                              //
           << szCloseDocument;
    std::string strReply;
    if (!SendCommand(script.Text(), strReply)) return false;
    if (ParseInteger(strReply.c_str()) != 1) return false;

    m_strLastError = strDuplicate;
    m_strAdvice = strCaptureCancelled;
    m_fKeepMessages = true;
    return true;
}

int CTANClientInterProcess::SendFile(bool fAudioSuite, int idTrack, CFileName* file, double first,
                                     double second, double third, int channelMask) {
    const int id = FindHostForCommand();
    if (id < 1) return -1;

    const std::int64_t lFirst = TruncateToSamples(first);
    CScriptWriter script;
    script << szOpenDocument.For(fAudioSuite)                                            //
           << "idTrack = GetTrackID(" << idTrack << ")\n"                                //
           << "AddAudioRegion(idTrack, \"" << EscapedPath(*file) << "\", true, false, "  //
           << lFirst << "," << TruncateToSamples(second) << "," << TruncateToSamples(third);
    if (channelMask > 0) script << ",1," << ChannelList(channelMask);
    script << ")\n"  //
           << "MoveDisplayToPosition(" << static_cast<double>(lFirst) + second << ")\n"
           << szCloseDocument;
    std::string strReply;
    return SendTANMessage(id, script.Text(), strReply, kWaitForEver);
}

bool CTANClientInterProcess::ExportSelectedRegion(bool fAudioSuite, int /*unused*/,
                                                  CFileName* exportedFile) {
    m_strRegionInfo.clear();
    m_strFileInfo.clear();
    std::string strRequest(szExportSelectedRegion.For(fAudioSuite));
    std::string strReply;
    if (!SendCommand(strRequest, strReply)) return false;

    std::vector<std::string> values;
    SplitResult(strReply, &values);
    if (values.size() == 1) ReportReason(values[0]);
    if (values.size() != 2) return false;
    *exportedFile = CFileName(&values[1]);
    m_strFileInfo = "File: " + EscapedPath(*exportedFile);
    return true;
}

bool CTANClientInterProcess::RenderSelectedRegion(bool fAudioSuite, int sessionRate,
                                                  std::int64_t* start, std::int64_t* end) {
    const int id = FindHostForCommand();
    if (id < 1) return false;

    std::string strRequest(szRenderSelectedRegion.For(fAudioSuite));
    std::string strReply;
    const int nStatus = SendTANMessage(id, strRequest, strReply, kWaitForEver);
    m_strRegionInfo.clear();
    m_strFileInfo.clear();
    if (nStatus != kExchangeDone) return false;

    std::vector<std::string> values;
    SplitResult(strReply, &values);
    const bool fRendered = values.size() == 4;
    std::int32_t nHostRate = sessionRate;
    if (fRendered) {
        nHostRate = static_cast<std::int32_t>(ParseInteger(values[1].c_str()));
        *start = ParseInteger(values[2].c_str());
        *end = ParseInteger(values[3].c_str());
        m_strRegionInfo = "Start: " + std::to_string(*start) + " End: " + std::to_string(*end) +
                          " Sample Rate: " + std::to_string(nHostRate);
    }
    if (values.size() == 1) ReportReason(values[0]);
    if (sessionRate != -1 && sessionRate != nHostRate) {
        m_strLastError = SampleRateWarning(sessionRate, nHostRate);
    }
    return fRendered;
}

void CTANClientInterProcess::ReportReason(std::string const& code) {
    const auto nReason = static_cast<std::int32_t>(ParseInteger(code.c_str()));
    if (nReason >= 0 && nReason < static_cast<std::int32_t>(std::size(kReasons))) {
        m_strLastError = kReasons[nReason];
    }
}

std::string SampleRateWarning(int sessionRate, int hostRate) {
    return "Warning - Session Sample Rate is: " + std::to_string(sessionRate) +
           " Tavarin Pro Sample rate is: " + std::to_string(hostRate);
}

std::string EscapeBackstroke(std::string const& text) {
    std::string strEscaped;
    strEscaped.reserve(text.size());
    for (const char character : text) {
        strEscaped += character;
        if (character == '\\') strEscaped += '\\';
    }
    return strEscaped;
}
