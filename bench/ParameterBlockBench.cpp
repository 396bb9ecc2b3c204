#include <malloc.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "bench/Contender.h"
#include "bench/ResultLog.h"

// Measures saving, loading, finding, copying and comparing trees of named values against other
// libraries. The contenders take turns, so that a slow moment of the machine meets all of them.
// Prints its results as JSON lines.

namespace {

using Contenders = std::vector<std::unique_ptr<CContender>>;

struct COperation {
    const char* name;
    // Prepares one timed call; may be empty.
    std::function<void(CContender&)> prepare;
    std::function<void(CContender&)> run;
    // What the time is divided by; 0 stands for the nodes of the tree.
    std::size_t nPerRun = 0;
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

double ProcessorNanoseconds() {
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e9 + static_cast<double>(used.tv_nsec);
}

double Nanoseconds(std::function<void()> const& run) {
    const double start = ProcessorNanoseconds();
    run();
    return ProcessorNanoseconds() - start;
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

void Measure(Contenders& contenders, std::string const& work, COperation const& operation,
             std::size_t nodes, int rounds) {
    std::vector<CSamples> times(contenders.size());
    std::vector<int> calls;
    for (auto& contender : contenders) {
        const double once = TimeOnce(*contender, operation, 1);
        calls.push_back(std::clamp(static_cast<int>(5e6 / once), 1, 10000));
    }
    const double scale = static_cast<double>(operation.nPerRun > 0 ? operation.nPerRun : nodes);
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < contenders.size(); ++i)
            times[i].Add(TimeOnce(*contenders[i], operation, calls[i]) / scale);
    for (std::size_t i = 0; i < contenders.size(); ++i)
        PrintSeries(work, contenders[i]->Name(), "ns per node", times[i]);
}

// The kilobytes of a line of this process's status.
long StatusKilobytes(const char* key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + std::strlen(key));
    return 0;
}

struct CSubject {
    const char* title;
    CBenchNode (*make)();
    bool fCompare;
};

constexpr CSubject subjects[] = {
    {"Scheme", SchemeTree, true},
    {"Flat, twenty names", FlatTree, true},
    // Comparing this one takes RapidJSON hours: it searches every member of an object anew.
    {"Flat, every name different", FlatTreeOfDifferentNames, false},
};

// Prints the most memory, in kilobytes, that loading takes beyond the image. For a process that
// does nothing else: a child makes the image and hands it over in shared pages.
int PrintPeakMemory(std::size_t contender, std::size_t subject, std::size_t imageSize) {
    const Contenders contenders = MakeContenders();
    CContender& tested = *contenders.at(contender);
    void* const shared =
        mmap(nullptr, imageSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) return 1;
    const pid_t maker = fork();
    if (maker == 0) {
        tested.Build(CBenchTree(subjects[subject].make()));
        tested.Save();
        std::memcpy(shared, tested.Image().data(), std::min(imageSize, tested.Image().size()));
        _exit(0);
    }
    waitpid(maker, nullptr, 0);
    const std::string_view image(static_cast<char*>(shared), imageSize);
    // Reading the image brings its pages in before the count begins.
    const auto zeros = std::count(image.begin(), image.end(), '\0');
    std::ofstream("/proc/self/clear_refs") << "5";
    const long before = StatusKilobytes("VmRSS:");
    tested.Load(image);
    std::printf("%ld\n", zeros < 0 ? 0 : StatusKilobytes("VmHWM:") - before);
    return 0;
}

double PeakMemory(std::size_t contender, std::size_t subject, std::size_t imageSize) {
    const std::string command = "/proc/" + std::to_string(getpid()) + "/exe --memory " +
                                std::to_string(contender) + " " + std::to_string(subject) + " " +
                                std::to_string(imageSize);
    std::FILE* const answer = popen(command.c_str(), "r");
    char text[32] = "";
    if (answer == nullptr || std::fgets(text, sizeof text, answer) == nullptr) text[0] = '\0';
    if (answer != nullptr) pclose(answer);
    return std::atof(text);
}

void Compare(std::size_t number, std::vector<std::string> const& names, int rounds) {
    CSubject const& subject = subjects[number];
    const bool compare = subject.fCompare;
    const CBenchTree tree(subject.make());
    const std::size_t nodes = CountNodes(tree.repeating);
    Contenders contenders = MakeContenders();
    const std::string title = subject.title;
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        CContender& contender = *contenders[i];
        contender.Build(tree);
        if (compare) contender.BuildTwin();
        const std::size_t size = contender.Save();
        const std::string image(contender.Image());
        contender.Load(image);
        if (compare && !contender.LoadedIsEqual())
            std::fprintf(stderr, "%s: %s loads another tree than it saved\n", subject.title,
                         contender.Name());
        contender.Drop();
        PrintValue(title + ": image", contender.Name(), "bytes", static_cast<double>(size));
        PrintValue(title + ": peak memory of loading", contender.Name(), "kB",
                   PeakMemory(i, number, size));
    }

    std::vector<COperation> operations;
    operations.push_back({"save", nullptr, [](CContender& c) { c.Save(); }});
    operations.push_back({"save a tree just built", [&tree](CContender& c) { c.Build(tree); },
                          [](CContender& c) { c.Save(); }});
    operations.push_back({"load and free", nullptr, [](CContender& c) {
                              c.Load(c.Image());
                              c.Drop();
                          }});
    operations.push_back(
        {"load", [](CContender& c) { c.Drop(); }, [](CContender& c) { c.Load(c.Image()); }});
    operations.push_back({"deep copy", nullptr, [](CContender& c) { c.Copy(); }});
    if (compare) operations.push_back({"compare", nullptr, [](CContender& c) { c.Equal(); }});
    if (!names.empty())
        operations.push_back({"find by name", nullptr,
                              [&names](CContender& c) {
                                  for (std::string const& name : names)
                                      if (!c.Find(name.c_str())) std::abort();
                              },
                              names.size()});
    for (COperation const& operation : operations)
        Measure(contenders, title + ": " + operation.name, operation, nodes, rounds);

    // The limit: nothing can be faster than copying the finished image.
    const std::string image(contenders[0]->Image());
    std::vector<char> target(image.size());
    CSamples copies;
    for (int i = 0; i < 200; ++i)
        copies.Add(Nanoseconds([&] { std::memcpy(target.data(), image.data(), image.size()); }) /
                   static_cast<double>(nodes));
    PrintSeries(title + ": copy of the image", "memcpy", "ns per node", copies);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::strcmp(argv[1], "--memory") == 0)
        return PrintPeakMemory(std::strtoul(argv[2], nullptr, 10),
                               std::strtoul(argv[3], nullptr, 10),
                               std::strtoul(argv[4], nullptr, 10));
    // The heap keeps what is freed, so that no row counts how the kernel takes and gives pages.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const int rounds = quick ? 3 : 7;
    std::vector<std::string> names;
    for (int i = 0; i < 100000; i += 1009) names.push_back("value" + std::to_string(i));
    Compare(0, {"Comps"}, rounds);
    Compare(1, {}, rounds);
    Compare(2, names, rounds);
    return 0;
}
