#include "tools/LinkSession.h"

#include <cstdio>
#include <cstring>

#include "platform/NumberText.h"
#include "tools/ToolFailure.h"

namespace {

constexpr int kTrackListTimeoutMs = 1000;

std::string DescribeStatus(int nStatus) {
    if (nStatus == 121) return "the host did not answer in time";
    if (nStatus == -1) return "the host takes no requests";
    return std::string("the host's message segment cannot be used: ") + std::strerror(nStatus);
}

}  // namespace

int CLinkSession::RequireHost() {
    const int id = m_client.GetCurrentTANHost();
    if (id < 1) Fail("no host");
    return id;
}

std::vector<std::string> CLinkSession::Tracks() {
    std::vector<std::string> tracks;
    const int nResult =
        m_client.ListTracksWithTimeout(IsAudioSuite(), &tracks, kTrackListTimeoutMs);
    if (nResult != 0 || tracks.empty()) Fail("the host did not answer in time");
    return tracks;
}

std::string CLinkSession::Run(std::string script, int nTimeoutMs) {
    const int id = RequireHost();
    std::string strReply;
    const int nStatus = m_client.SendTANMessage(id, script, strReply, nTimeoutMs);
    m_notice.End();
    if (nStatus != 0) Fail(DescribeStatus(nStatus));
    if (!m_client.m_strLastError.empty()) std::fputs(strReply.c_str(), stdout);
    RequireNoError();
    return strReply;
}

void CLinkSession::Fail(std::string const& strWhat) {
    if (m_client.m_strLastError.empty()) throw CToolFailure(exitNegative, strWhat);
    std::string strAdvice = m_client.m_strAdvice;
    const bool fNoSession = strAdvice.empty() && m_client.GetCurrentIdFromMainDirectory() == 0;
    if (fNoSession) strAdvice = "Select a session in Tavarin Pro.";
    throw CToolFailure(exitNegative, m_client.m_strLastError, strAdvice);
}

void CLinkSession::RequireNoError() {
    if (!m_client.m_strLastError.empty()) Fail("");
}

int CLinkSession::SampleRate() {
    const std::string strDocument =
        IsAudioSuite() ? "SelectAudioSuiteDocument" : "SelectScriptDocument";
    const std::string strRate = Run("if " + strDocument + "() then\nprint(GetSampleRate())\nend\n");
    const auto nRate = static_cast<int>(ParseInteger(strRate.c_str()));
    if (nRate < 1) throw CToolFailure(exitNegative, "the host does not say its sample rate");
    return nRate;
}

void CLinkSession::Warn(std::string const& strText) {
    m_notice.End();
    std::fprintf(stderr, "tavarin: %s\n", strText.c_str());
}

void CLinkSession::Print(std::string const& strText, nlohmann::json const& json) {
    m_notice.End();
    if (m_options.m_fJson) {
        std::printf("%s\n",
                    json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    } else {
        std::printf("%s\n", strText.c_str());
    }
}
