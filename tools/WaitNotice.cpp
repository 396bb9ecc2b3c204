#include "tools/WaitNotice.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

namespace {

void ShowSeconds(std::stop_token const& stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any wake;
    int nSeconds = 0;
    while (!wake.wait_for(lock, stop, std::chrono::seconds(1),
                          [&] { return stop.stop_requested(); })) {
        std::fprintf(stderr, "\rwaiting for the host, %d s\x1b[K", ++nSeconds);
    }
    if (nSeconds > 0) std::fputs("\r\x1b[K", stderr);
}

}  // namespace

CWaitNotice::CWaitNotice() {
    if (isatty(STDERR_FILENO)) m_thread = std::jthread(ShowSeconds);
}

CWaitNotice::~CWaitNotice() {
    End();
}

void CWaitNotice::End() {
    m_thread = std::jthread();
}
