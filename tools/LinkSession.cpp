#include "tools/LinkSession.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/NumberText.h"
#include "tools/InputOutput.h"
#include "tools/LinkRescue.h"
#include "tools/ToolFailure.h"

namespace {

constexpr int kWaitForEver = -1;
constexpr double kShortPatience = 5;

std::optional<CHostWatch::Clock::duration> HowLong(CLinkOptions const& options, Patience patience) {
    if (!options.m_dTimeout && patience == Patience::Long) return std::nullopt;
    const std::chrono::duration<double> time(options.m_dTimeout.value_or(kShortPatience));
    return std::chrono::duration_cast<CHostWatch::Clock::duration>(time);
}

std::string DescribeStatus(int nStatus) {
    if (nStatus == -1) return "the host takes no requests";
    return std::string("the host's message segment cannot be used: ") + std::strerror(nStatus);
}

// An error without "script:3: " in front, which names a line that the user has never seen.
std::string WithoutPlace(std::string const& strError) {
    constexpr std::string_view kScript = "script:";
    if (!strError.starts_with(kScript)) return strError;
    const std::size_t nEnd = strError.find_first_not_of("0123456789", kScript.size());
    const bool fPlace = nEnd != std::string::npos && strError.compare(nEnd, 2, ": ") == 0;
    return fPlace ? strError.substr(nEnd + 2) : strError;
}

}  // namespace

CLinkSession::CLinkSession(CLinkOptions const& options, Patience patience)
    : m_options(options), m_watch(HowLong(options, patience)) {}

void CLinkSession::Await(std::function<bool(std::chrono::milliseconds)> const& isDone) {
    const int nHost = m_client.GetCurrentIdFromMainDirectory();
    m_notice.Say("waiting for the host");
    const std::string strWhy = m_watch.Await(nHost, isDone);
    m_notice.Hide();
    if (strWhy.empty()) return;
    const bool fDead = nHost > 0 && RescueFromDeadHost(nHost).fDone;
    const CToolFailure failure(
        exitNegative, strWhy,
        fDead
            ? "It has died. Whoever waited for it was sent away."
            : "The command may still be carried out; what it holds of the link is free again once "
              "the host notices.",
        "no_answer");
    failure.Report("tavarin", m_options.m_fJson);
    std::fflush(nullptr);
    std::_Exit(failure.Status());
}

int CLinkSession::RequireHost() {
    const int id = m_client.GetCurrentTANHost();
    if (id < 1) Fail("no host");
    return id;
}

std::vector<std::string> CLinkSession::Tracks() {
    std::vector<std::string> tracks;
    const int nResult =
        Do([&] { return m_client.ListTracksWithTimeout(IsAudioSuite(), &tracks, kWaitForEver); });
    if (nResult != 0 || tracks.empty()) Fail("the host did not answer");
    return tracks;
}

std::string CLinkSession::Run(std::string script) {
    const int id = RequireHost();
    std::string strReply;
    const int nStatus =
        Do([&] { return m_client.SendTANMessage(id, script, strReply, kWaitForEver); });
    if (nStatus != 0) Fail(DescribeStatus(nStatus));
    if (!m_client.m_strLastError.empty()) std::fputs(strReply.c_str(), stdout);
    RequireNoError();
    return strReply;
}

std::optional<CLinkContents> CLinkSession::Contents() {
    const int id = RequireHost();
    std::string strScript = ContentsScript(SelectDocument()), strReply;
    const int nStatus =
        Do([&] { return m_client.SendTANMessage(id, strScript, strReply, kWaitForEver); });
    if (nStatus != 0) Fail(DescribeStatus(nStatus));
    if (!m_client.m_strLastError.empty()) return std::nullopt;
    std::vector<std::string> lines;
    m_client.SplitResult(strReply, &lines);
    return ReadContents(lines);
}

void CLinkSession::Fail(std::string const& strWhat) {
    if (m_client.m_strLastError.empty()) throw CToolFailure(exitNegative, strWhat, "", "refused");
    std::string strAdvice = m_client.m_strAdvice;
    const int nHost = m_client.GetCurrentIdFromMainDirectory();
    if (strAdvice.empty() && nHost == 0) strAdvice = "Select a session in Tavarin Pro.";
    const std::string& strError = m_client.m_strLastError;
    throw CToolFailure(exitNegative, m_fUsersScript ? strError : WithoutPlace(strError), strAdvice,
                       nHost < 0    ? "no_host"
                       : nHost == 0 ? "no_session"
                                    : "refused");
}

void CLinkSession::RequireNoError() {
    if (!m_client.m_strLastError.empty()) Fail("");
}

int CLinkSession::TrackNumber(std::string const& strTrack) {
    int nTrack = 0;
    const char* const pEnd = strTrack.data() + strTrack.size();
    const auto read = std::from_chars(strTrack.data(), pEnd, nTrack);
    if (read.ec == std::errc() && read.ptr == pEnd) return nTrack;
    const std::vector<std::string> tracks = Tracks();
    const auto found = std::find(tracks.begin(), tracks.end(), strTrack);
    if (found == tracks.end())
        throw CToolFailure(exitTrouble, "there is no track " + Quoted(strTrack),
                           "`tavarin link tracks` lists them.", "usage");
    if (std::count(tracks.begin(), tracks.end(), strTrack) > 1)
        throw CToolFailure(exitTrouble, "there is more than one track " + Quoted(strTrack),
                           "Give its number.", "usage");
    return static_cast<int>(found - tracks.begin());
}

int CLinkSession::SampleRate() {
    const std::string strRate =
        Run("if " + SelectDocument() + " then\nprint(GetSampleRate())\nend\n");
    const auto nRate = static_cast<int>(ParseInteger(strRate.c_str()));
    if (nRate < 1) throw CToolFailure(exitNegative, "the host does not say its sample rate");
    return nRate;
}

void CLinkSession::Warn(std::string const& strText) {
    std::fprintf(stderr, "tavarin: %s\n", strText.c_str());
}

void CLinkSession::Print(std::string const& strText, nlohmann::json const& json) {
    if (m_options.m_fJson) {
        std::printf("%s\n",
                    json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    } else {
        std::printf("%s\n", strText.c_str());
    }
}
