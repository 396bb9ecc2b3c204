#pragma once

#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "platform/Processes.h"

/// On which processor cores client and servers run.
enum class EPlacement { Apart, Together, Free };

inline void Check(bool fHolds, const char* szWhat) {
    if (fHolds) return;
    std::fprintf(stderr, "bench: %s\n", szWhat);
    std::exit(1);
}

inline double NowUs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

/// The processor time that this process has used.
inline double ProcessorUs() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e6 + static_cast<double>(used.tv_nsec) / 1e3;
}

inline void SleepUs(double dMicroseconds) {
    usleep(static_cast<useconds_t>(dMicroseconds));
}

inline void PlaceClient(EPlacement placement) {
    RunOnCore(placement == EPlacement::Free ? -1 : 0);
}

inline void PlaceServer(EPlacement placement) {
    RunOnCore(placement == EPlacement::Free ? -1 : placement == EPlacement::Apart ? 1 : 0);
}

/// A child process that ends when this object does.
class CChild {
public:
    template <typename Body>
    explicit CChild(Body body) : m_nProcess(fork()) {
        if (m_nProcess == 0) {
            EndWithParent();
            body();
            _exit(0);
        }
    }
    CChild(CChild const&) = delete;
    CChild& operator=(CChild const&) = delete;
    ~CChild() {
        kill(m_nProcess, SIGTERM);
        waitpid(m_nProcess, nullptr, 0);
    }

    pid_t Process() const { return m_nProcess; }

private:
    pid_t m_nProcess;
};
