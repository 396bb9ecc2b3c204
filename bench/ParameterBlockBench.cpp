#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "bench/Contender.h"

// Measures saving, loading, finding, copying and comparing trees of named values against other
// libraries. The contenders take turns, so that a slow moment of the machine meets all of them, and
// each round gives one ratio to the parameter block.

namespace {

using Contenders = std::vector<std::unique_ptr<CContender>>;

struct COperation {
    const char* name;
    // Prepares one timed call; may be empty.
    std::function<void(CContender&)> prepare;
    std::function<void(CContender&)> run;
    // Whether the time is per node of the tree, or per call.
    bool fPerNode = true;
};

Contenders MakeContenders() {
    Contenders contenders;
    contenders.push_back(MakeParameterBlockContender());
#ifdef TAVARIN_BENCH_MSGPACK
    contenders.push_back(MakeMsgpackContender());
#endif
#ifdef TAVARIN_BENCH_RAPIDJSON
    contenders.push_back(MakeRapidJsonContender());
#endif
#ifdef TAVARIN_BENCH_NLOHMANN
    contenders.push_back(MakeNlohmannCborContender());
    contenders.push_back(MakeNlohmannMsgpackContender());
#endif
#ifdef TAVARIN_BENCH_PROTOBUF
    contenders.push_back(MakeProtobufContender());
#endif
    return contenders;
}

double Nanoseconds(std::function<void()> const& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start)
        .count();
}

double Quantile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1) + 0.5)];
}

// One round's time of one call: the mean of as many calls as fill a few milliseconds.
double TimeOnce(CContender& contender, COperation const& operation, int calls) {
    double total = 0;
    for (int i = 0; i < calls; ++i) {
        if (operation.prepare) operation.prepare(contender);
        total += Nanoseconds([&] { operation.run(contender); });
    }
    return total / calls;
}

void Measure(Contenders& contenders, COperation const& operation, std::size_t nodes, int rounds) {
    std::vector<std::vector<double>> times(contenders.size());
    std::vector<int> calls;
    for (auto& contender : contenders) {
        const double once = TimeOnce(*contender, operation, 1);
        calls.push_back(std::clamp(static_cast<int>(5e6 / once), 1, 10000));
    }
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < contenders.size(); ++i)
            times[i].push_back(TimeOnce(*contenders[i], operation, calls[i]));
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        std::vector<double> ratios;
        for (std::size_t round = 0; round < times[i].size(); ++round)
            ratios.push_back(times[i][round] / times[0][round]);
        const double scale = operation.fPerNode ? static_cast<double>(nodes) : 1.0;
        std::printf("| %s | %s | %.1f | %.1f – %.1f | %.2f | %.2f – %.2f |\n", operation.name,
                    contenders[i]->Name(), Quantile(times[i], 0.5) / scale,
                    Quantile(times[i], 0.1) / scale, Quantile(times[i], 0.9) / scale,
                    Quantile(ratios, 0.5), Quantile(ratios, 0.1), Quantile(ratios, 0.9));
        std::fflush(stdout);
    }
}

// The kilobytes of a line of this process's status.
long StatusKilobytes(const char* key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + std::strlen(key));
    return 0;
}

// The most memory that loading takes beyond the image, in a process that has done nothing else: the
// image is made by a child and handed over in shared pages.
long PeakLoadKilobytes(std::size_t contender, CBenchNode const& tree, std::size_t imageSize) {
    int answer[2];
    if (pipe(answer) != 0) return -1;
    const pid_t child = fork();
    if (child == 0) {
        Contenders contenders = MakeContenders();
        CContender& tested = *contenders[contender];
        void* shared =
            mmap(nullptr, imageSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        const pid_t maker = fork();
        if (maker == 0) {
            tested.Build(tree);
            tested.Save();
            std::memcpy(shared, tested.Image().data(), std::min(imageSize, tested.Image().size()));
            _exit(0);
        }
        waitpid(maker, nullptr, 0);
        const std::string_view image(static_cast<char*>(shared), imageSize);
        // Reading the image brings its pages in before the count begins.
        long sum = std::count(image.begin(), image.end(), '\0');
        std::ofstream("/proc/self/clear_refs") << "5";
        const long before = StatusKilobytes("VmRSS:");
        tested.Load(image);
        long peak = StatusKilobytes("VmHWM:") - before;
        if (sum < 0) peak = sum;
        static_cast<void>(!write(answer[1], &peak, sizeof peak));
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    long peak = -1;
    if (read(answer[0], &peak, sizeof peak) != sizeof peak) peak = -1;
    close(answer[0]);
    close(answer[1]);
    return peak;
}

void Compare(const char* title, CBenchNode const& tree, std::vector<std::string> const& names,
             bool compare, int rounds) {
    const std::size_t nodes = CountNodes(tree);
    Contenders contenders = MakeContenders();
    std::printf("\n### %s: %zu nodes\n\n", title, nodes);
    std::printf(
        "| image | bytes | per node | peak memory while loading (kB) |\n|---|---|---|---|\n");
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        CContender& contender = *contenders[i];
        contender.Build(tree);
        const std::size_t size = contender.Save();
        const std::string image(contender.Image());
        contender.Load(image);
        if (compare && !contender.LoadedIsEqual())
            std::printf("%s did not load what it saved\n", contender.Name());
        contender.Drop();
        std::printf("| %s | %zu | %.1f | %ld |\n", contender.Name(), size,
                    static_cast<double>(size) / static_cast<double>(nodes),
                    PeakLoadKilobytes(i, tree, size));
    }
    std::printf(
        "\n| operation | library | median ns | 10 – 90 %% | ratio to parameter block | "
        "10 – 90 %% |\n|---|---|---|---|---|---|\n");

    std::vector<COperation> operations;
    operations.push_back({"save", nullptr, [](CContender& c) { c.Save(); }});
    operations.push_back({"load and free", nullptr, [](CContender& c) {
                              c.Load(c.Image());
                              c.Drop();
                          }});
    operations.push_back(
        {"load", [](CContender& c) { c.Drop(); }, [](CContender& c) { c.Load(c.Image()); }});
    operations.push_back({"deep copy", nullptr, [](CContender& c) { c.Copy(); }});
    if (compare) operations.push_back({"compare", nullptr, [](CContender& c) { c.Equal(); }});
    operations.push_back({"find by name", nullptr,
                          [&names](CContender& c) {
                              for (std::string const& name : names)
                                  if (!c.Find(name.c_str())) std::abort();
                          },
                          false});
    for (COperation const& operation : operations) Measure(contenders, operation, nodes, rounds);

    // The limit: no saving can be faster than copying the finished image.
    const std::string image(contenders[0]->Image());
    std::vector<char> target(image.size());
    std::vector<double> copies;
    for (int i = 0; i < 200; ++i)
        copies.push_back(
            Nanoseconds([&] { std::memcpy(target.data(), image.data(), image.size()); }));
    const COperation save{"save", nullptr, [](CContender& c) { c.Save(); }};
    std::vector<double> saves;
    for (int i = 0; i < 50; ++i) saves.push_back(TimeOnce(*contenders[0], save, 1));
    std::printf(
        "\nmemcpy of the parameter block's image: %.2f ns per node; saving takes %.0f "
        "times that.\n",
        Quantile(copies, 0.5) / static_cast<double>(nodes),
        Quantile(saves, 0.5) / Quantile(copies, 0.5));
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 31;
    std::printf("%d rounds; times are per node, for finding per search of all names\n", rounds);
    Compare("Colour scheme", SchemeTree(), {"Comps"}, true, rounds);
    std::vector<std::string> names;
    for (int i = 500; i < 100000; i += 1000)
        names.push_back("value" + std::to_string(i + i / 1000 % 5));
    // RapidJSON compares objects member by member with a search each, hours for this one.
    Compare("Flat", FlatTree(), names, false, rounds);
    return 0;
}
