#include "tools/check/HostProcess.h"

#include <algorithm>
#include <boost/interprocess/exceptions.hpp>
#include <chrono>
#include <thread>

#include "host/DirectoryMark.h"
#include "platform/Processes.h"
#include "platform/SharedMemory.h"

namespace {

// A client has the directory mapped for two reads now and then; a host has it all the time.
constexpr int kLooks = 5;
constexpr std::chrono::milliseconds kBetweenLooks{10};

std::set<int> Users(CMappedSegment const& directory) {
    std::set<int> users;
    if (const auto threads = ThreadsThatMap(directory.Descriptor()))
        for (MappingThread const& thread : *threads) users.insert(thread.nProcess);
    return users;
}

std::set<int> Keepers(CMappedSegment const& directory) {
    if (MarkedDirectory const* const pMarked = FindMark(directory)) return {pMarked->nProcess};
    std::set<int> keepers = Users(directory);
    for (int nLook = 1; nLook < kLooks; ++nLook) {
        std::this_thread::sleep_for(kBetweenLooks);
        const std::set<int> users = Users(directory);
        std::erase_if(keepers, [&](int nUser) { return !users.contains(nUser); });
    }
    return keepers;
}

}  // namespace

CHostProcess::CHostProcess() {
    try {
        m_processes = Keepers(CMappedSegment(szDirectorySegment));
    } catch (boost::interprocess::interprocess_exception const&) {
        // There is no host.
    }
}

bool CHostProcess::HasEnded() const noexcept {
    return !m_processes.empty() && std::none_of(m_processes.begin(), m_processes.end(),
                                                [](int nUser) { return ProcessRuns(nUser); });
}

std::string CHostProcess::Text() const {
    return m_processes.empty() ? "" : "process " + std::to_string(*m_processes.begin());
}
