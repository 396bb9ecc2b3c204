#include "platform/Processes.h"

#include <sched.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>

void RunOnCore(int nCore) noexcept {
    const long nCores = sysconf(_SC_NPROCESSORS_ONLN);
    cpu_set_t cores;
    CPU_ZERO(&cores);
    for (long i = 0; i < nCores; ++i)
        if (nCore < 0 || i == nCore % nCores) CPU_SET(i, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}

void EndWithParent() noexcept {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

double ProcessorSecondsOf(pid_t nProcess) noexcept {
    clockid_t clock{};
    timespec used{};
    if (clock_getcpuclockid(nProcess, &clock) != 0 || clock_gettime(clock, &used) != 0) return 0;
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

bool ProcessRuns(pid_t nProcess) noexcept {
    if (nProcess <= 0 || (kill(nProcess, 0) != 0 && errno != EPERM)) return false;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/%d/status", static_cast<int>(nProcess));
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "re"), std::fclose);
    char line[256];
    while (file && std::fgets(line, sizeof line, file.get())) {
        char state = 0;
        if (std::sscanf(line, "State: %c", &state) == 1) return state != 'Z' && state != 'X';
    }
    return file != nullptr;
}
