#include "tools/HostWatch.h"

#include <boost/interprocess/exceptions.hpp>
#include <cstdio>
#include <utility>

#include "host/DirectoryMark.h"
#include "link/MappedSegment.h"
#include "link/SharedSegments.h"

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};

template <typename Read>
auto FromDirectory(Read read) -> decltype(read(std::declval<CMappedSegment const&>())) {
    try {
        return read(CMappedSegment(szDirectorySegment));
    } catch (boost::interprocess::interprocess_exception const&) {
        return {};
    }
}

// Without the lock: a torn number is another number, and that is all that matters.
std::optional<std::int64_t> ReadHeartbeat() {
    return FromDirectory([](CMappedSegment const& directory) -> std::optional<std::int64_t> {
        if (directory.Size() < sizeof(DirectoryRecord)) return std::nullopt;
        // Not at its own alignment there, so no reference may be made to it.
        std::int64_t const lHeartbeat =
            reinterpret_cast<DirectoryRecord const*>(directory.Bytes())->lHeartbeat;
        return lHeartbeat;
    });
}

std::int32_t ReadProcess() {
    return FromDirectory([](CMappedSegment const& directory) -> std::int32_t {
        MarkedDirectory const* const pMarked = FindMark(directory);
        return pMarked ? pMarked->nProcess : 0;
    });
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
