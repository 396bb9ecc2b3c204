// How long the reference host takes from its start to its first answer. Prints its result as a JSON
// line.
//
//   StartBench HOST-PROGRAM [--quick]

#include <cstring>
#include <string>

#include "bench/ResultLog.h"
#include "bench/exchange/BenchProcess.h"
#include "link/TANClientInterProcess.h"

int main(int argc, char** argv) {
    Check(argc > 1, "which program is the host?");
    const bool fQuick = argc > 2 && std::strcmp(argv[2], "--quick") == 0;
    CSamples times;
    for (int nRound = 0; nRound < (fQuick ? 5 : 30); ++nRound) {
        CTANClientInterProcess client;
        const double dStart = NowUs();
        const CChild host([&] { execl(argv[1], argv[1], "--quiet", static_cast<char*>(nullptr)); });
        while (client.GetUpdateCount() == 0 && NowUs() - dStart < 10e6) SleepUs(200);
        times.Add((NowUs() - dStart) / 1000);
    }
    PrintSeries("host start to first answer", "reference host", "ms", times);
    return 0;
}
