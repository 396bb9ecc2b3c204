#include "tools/HostWatch.h"

#include <boost/interprocess/exceptions.hpp>
#include <cstdio>
#include <cstring>

#include "link/MappedSegment.h"
#include "link/SharedSegments.h"

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};

// What tavarin-host writes behind its directory's record.
struct CMarkedDirectory {
    DirectoryRecord record;
    char szMark[8];
    std::int32_t nProcess;
};
constexpr char szDirectoryMark[] = "tvrnlck";

template <typename Read>
auto FromDirectory(std::size_t nSize, Read read) -> std::optional<decltype(read(nullptr))> {
    try {
        const CMappedSegment segment(szDirectorySegment);
        if (segment.Size() < nSize) return std::nullopt;
        return read(segment.Bytes());
    } catch (boost::interprocess::interprocess_exception const&) {
        return std::nullopt;
    }
}

// Without the lock: a torn number is another number, and that is all that matters.
std::optional<std::int64_t> ReadHeartbeat() {
    return FromDirectory(sizeof(DirectoryRecord), [](unsigned char const* pBytes) {
        return reinterpret_cast<DirectoryRecord const*>(pBytes)->lHeartbeat;
    });
}

std::int32_t ReadProcess() {
    const auto nProcess =
        FromDirectory(sizeof(CMarkedDirectory), [](unsigned char const* pBytes) -> std::int32_t {
            const auto* const pMarked = reinterpret_cast<CMarkedDirectory const*>(pBytes);
            const bool fMarked =
                std::memcmp(pMarked->szMark, szDirectoryMark, sizeof(szDirectoryMark)) == 0;
            return fMarked ? pMarked->nProcess : 0;
        });
    return nProcess.value_or(0);
}

std::string Seconds(CHostWatch::Clock::duration duration) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g s", std::chrono::duration<double>(duration).count());
    return text;
}

}  // namespace

std::string NameOfHost(int nHost) {
    const std::int32_t nProcess = ReadProcess();
    return "Host " + std::to_string(nHost) +
           (nProcess > 0 ? " (process " + std::to_string(nProcess) + ")" : "");
}

CHostWatch::CHostWatch(std::optional<Clock::duration> patience) : m_patience(patience) {}

std::string CHostWatch::Await(int nHost,
                              std::function<bool(std::chrono::milliseconds)> const& isDone) {
    m_lHeartbeat = ReadHeartbeat();
    m_moved = Clock::now();
    while (!isDone(kBetweenLooks)) {
        if (IsSilent())
            return NameOfHost(nHost) + " does not answer since " + Seconds(kSilence) + ".";
        if (m_patience && Clock::now() - m_begun >= *m_patience)
            return NameOfHost(nHost) + " has not answered within " + Seconds(*m_patience) + ".";
    }
    return "";
}

bool CHostWatch::IsSilent() {
    const std::optional<std::int64_t> lHeartbeat = ReadHeartbeat();
    if (lHeartbeat && lHeartbeat != m_lHeartbeat) m_moved = Clock::now();
    m_lHeartbeat = lHeartbeat;
    return Clock::now() - m_moved >= kSilence;
}
