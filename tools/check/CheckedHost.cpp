#include "tools/check/CheckedHost.h"

#include <sndfile.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "tools/InputOutput.h"
#include "tools/check/CheckText.h"

namespace {

constexpr int kUsualSampleRate = 48'000;
constexpr std::size_t kShownLength = 60;

std::vector<short> MakeTone(int nSampleRate, int nChannels) {
    constexpr double kTurnsPerSample = 0.02;
    std::vector<short> samples;
    for (int nFrame = 0; nFrame < nSampleRate; ++nFrame) {
        const double dTurns = kTurnsPerSample * nFrame;
        const auto nSample = static_cast<short>(8000 * std::sin(2 * M_PI * dTurns));
        samples.insert(samples.end(), static_cast<std::size_t>(nChannels), nSample);
    }
    return samples;
}

}  // namespace

std::string Shorten(std::string const& strText) {
    const std::string strShort = strText.substr(0, kShownLength);
    return Quoted(strShort) + (strText.size() > kShownLength ? "..." : "");
}

std::string Milliseconds(double dMilliseconds) {
    char text[32];
    std::snprintf(text, sizeof text, dMilliseconds < 10 ? "%.2f ms" : "%.0f ms", dMilliseconds);
    return text;
}

std::string CheckedExchange::Describe() const {
    if (nStatus != 0) return "status " + std::to_string(nStatus);
    if (!strError.empty()) return "script error " + Shorten(strError);
    return "answered " + Shorten(strReply) + " in " + Milliseconds(dMilliseconds);
}

CCheckedHost::~CCheckedHost() {
    std::error_code ignored;
    if (!m_strDirectory.empty()) std::filesystem::remove_all(m_strDirectory, ignored);
}

CMappedSegment CCheckedHost::MapMessages() {
    return CMappedSegment(m_client.GetNameOfHost(Id()).c_str());
}

CheckedExchange CCheckedHost::Exchange(std::string script, int nTimeoutMs) {
    CheckedExchange exchange{};
    const int nHost = Id();
    m_client.m_fKeepMessages = false;
    const auto start = std::chrono::steady_clock::now();
    exchange.nStatus = m_client.SendTANMessage(nHost, script, exchange.strReply, nTimeoutMs);
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    exchange.dMilliseconds = taken.count();
    exchange.strError = m_client.m_strLastError;
    return exchange;
}

std::optional<std::int64_t> CCheckedHost::Ask(std::string const& strLines) {
    const CheckedExchange exchange =
        Exchange("if SelectAudioSuiteDocument(true) then\n" + strLines + "end\n");
    if (!exchange.IsGood()) return {};
    std::int64_t lNumber = 0;
    const char* const pEnd = exchange.strReply.data() + exchange.strReply.size();
    if (std::from_chars(exchange.strReply.data(), pEnd, lNumber).ec != std::errc()) return {};
    return lNumber;
}

std::optional<std::int64_t> CCheckedHost::RegionCount(int nScratch) {
    return Ask("print(GetRegionCount(GetTrackID(" + std::to_string(Track(nScratch)) + ")))\n");
}

int CCheckedHost::SampleRate() {
    if (m_nSampleRate == 0) {
        const std::int64_t lRate = Ask("print(GetSampleRate())\n").value_or(0);
        const bool fUsable = lRate >= 1000 && lRate <= 1'000'000;
        m_nSampleRate = fUsable ? static_cast<int>(lRate) : kUsualSampleRate;
    }
    return m_nSampleRate;
}

std::string CCheckedHost::WriteTake(std::string const& strName, int nChannels) {
    if (m_strDirectory.empty()) {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "tavarin-check-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make " + pattern);
        m_strDirectory = pattern;
    }
    const std::string strPath = m_strDirectory + "/" + strName;
    SF_INFO info{};
    info.samplerate = SampleRate();
    info.channels = nChannels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const pFile = sf_open(strPath.c_str(), SFM_WRITE, &info);
    if (!pFile) throw std::runtime_error("cannot write " + strPath);
    const std::vector<short> samples = MakeTone(info.samplerate, nChannels);
    const sf_count_t nWritten = sf_writef_short(pFile, samples.data(), info.samplerate);
    const bool fClosed = sf_close(pFile) == 0;
    if (nWritten != info.samplerate || !fClosed)
        throw std::runtime_error("cannot write " + strPath);
    return strPath;
}
