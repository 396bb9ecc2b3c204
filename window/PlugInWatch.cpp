#include "window/PlugInWatch.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

namespace {

// A process that the workstation forked may keep the socket open after it.
constexpr int kLookForParentEvery = 500;
// For ending in order.
constexpr std::chrono::milliseconds kGrace{200};
constexpr std::chrono::seconds kStandsStill{1};

void Watch(int nDescriptor, std::int64_t nWorkstation) {
    pollfd end{nDescriptor, 0, 0};
    while (poll(&end, 1, kLookForParentEvery) <= 0 && getppid() == nWorkstation) {
    }
    std::this_thread::sleep_for(kGrace);
    std::_Exit(0);
}

}  // namespace

void EndWithPlugIn(int nDescriptor, std::int64_t nWorkstation) {
    std::thread(Watch, nDescriptor, nWorkstation).detach();
}

void CloseWithoutTurns(std::atomic<unsigned> const& turns, std::function<bool()> isAsked,
                       std::function<void()> say) {
    std::thread([&turns, isAsked = std::move(isAsked), say = std::move(say)] {
        for (unsigned nSeen = turns;;) {
            std::this_thread::sleep_for(kStandsStill);
            if (std::exchange(nSeen, turns) != nSeen) continue;
            if (!isAsked()) continue;
            say();
            std::_Exit(0);
        }
    }).detach();
}
