#include "tools/LinkRescue.h"

#include <boost/interprocess/exceptions.hpp>
#include <chrono>
#include <system_error>
#include <thread>

#include "host/Farewell.h"
#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/SharedSegments.h"
#include "platform/NameLock.h"
#include "platform/SharedMemory.h"

namespace {

// A client has the directory mapped for two reads now and then; a host has it all the time.
constexpr int kTries = 50;
constexpr std::chrono::milliseconds kBetweenTries{10};

OtherUsers OthersIn(CMappedSegment const& directory) {
    OtherUsers others = OtherUsers::Some;
    for (int nTry = 0; nTry < kTries && others == OtherUsers::Some; ++nTry) {
        if (nTry > 0) std::this_thread::sleep_for(kBetweenTries);
        others = CExclusiveUse(directory.Descriptor()).Others();
    }
    return others;
}

// Empty when it is proven that no host has the directory.
std::string WhyAlive() {
    try {
        const CMappedSegment directory(szDirectorySegment);
        if (directory.Size() < sizeof(DirectoryRecord)) return "";
        const auto* const pRecord = reinterpret_cast<DirectoryRecord const*>(directory.Bytes());
        if (!IsHeartbeatStale(pRecord->lHeartbeat, LinkTimeNow()))
            return "its heartbeat is less than a second old";
        switch (OthersIn(directory)) {
            case OtherUsers::None:
                return "";
            case OtherUsers::Some:
                return "a process has the link's directory; it may be halted";
            case OtherUsers::Unknown:
                return "this system does not tell who has the link's directory";
        }
    } catch (boost::interprocess::interprocess_exception const&) {
        // There is none.
    }
    return "";
}

}  // namespace

CRescue RescueFromDeadHost(int nHost) try {
    const CNameLock lock(szDirectorySegment);
    if (!lock.IsHeld()) return {false, "a host has the link's lock; it is running, or halted"};
    std::string strWhy = WhyAlive();
    if (!strWhy.empty()) return {false, strWhy};
    SendAwayFromLeftover(nHost);
    return {true, ""};
} catch (std::system_error const& refusal) {
    return {false, refusal.what()};
}
