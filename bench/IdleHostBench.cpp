// How much of a processor core the reference host takes while nobody asks it anything. Prints its
// result as a JSON line.
//
//   IdleHostBench HOST-PROGRAM [--quick]

#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>

#include "bench/ResultLog.h"
#include "bench/exchange/BenchProcess.h"
#include "link/TANClientInterProcess.h"
#include "platform/Processes.h"

int main(int argc, char** argv) {
    Check(argc > 1, "which program is the host?");
    const bool fQuick = argc > 2 && std::strcmp(argv[2], "--quick") == 0;
    const double dWaitUs = fQuick ? 5e6 : 60e6;
    const CChild host([&] { execl(argv[1], argv[1], static_cast<char*>(nullptr)); });

    CTANClientInterProcess client;
    for (int nTry = 0; nTry < 500 && client.GetCurrentIdFromMainDirectory() < 0; ++nTry)
        SleepUs(10'000);
    Check(client.GetCurrentIdFromMainDirectory() >= 0, "the host did not start");
    SleepUs(1e6);

    const double dStart = NowUs();
    const double dUsed = ProcessorSecondsOf(host.Process());
    for (double dLeft = dWaitUs; dLeft > 0; dLeft -= 500'000) SleepUs(500'000);
    const double dShare = (ProcessorSecondsOf(host.Process()) - dUsed) * 1e6 / (NowUs() - dStart);
    PrintValue("idle host", "reference host", "% of a core", dShare * 100);
    return 0;
}
