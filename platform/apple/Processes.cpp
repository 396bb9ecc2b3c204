#include "platform/Processes.h"

#include <cerrno>
#include <csignal>

void RunOnCore(int) noexcept {}

void EndWithParent() noexcept {}

double ProcessorSecondsOf(pid_t) noexcept {
    return 0;
}

bool ProcessRuns(pid_t nProcess) noexcept {
    return nProcess > 0 && (kill(nProcess, 0) == 0 || errno == EPERM);
}
