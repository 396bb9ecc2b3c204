#include "platform/Processes.h"

#include <sched.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <csignal>

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
