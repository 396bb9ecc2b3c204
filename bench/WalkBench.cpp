// A walk through 1,000 folders of 100 files each, a tenth of them sound files, against
// `find DIR -name '*.wav'` on the same tree, by turns. Prints its results as JSON lines.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "FileIO/FileName.h"
#include "bench/ResultLog.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFolders = 1000;
constexpr int kFiles = 100;
constexpr int kSounds = kFolders * kFiles / 10;

// The tree, on disk while this object lives.
class CTree {
public:
    CTree() : m_path(CDiskPath::MakeTemporaryDirectory().GetFullPathString()) {
        for (int nFolder = 0; nFolder < kFolders; ++nFolder) {
            const fs::path folder = m_path / ("folder " + std::to_string(nFolder));
            fs::create_directory(folder);
            for (int nFile = 0; nFile < kFiles; ++nFile)
                std::ofstream(folder / ("take " + std::to_string(nFile) +
                                        (nFile % 10 == 0 ? ".wav" : ".txt")));
        }
    }
    ~CTree() { fs::remove_all(m_path); }
    CTree(CTree const&) = delete;
    CTree& operator=(CTree const&) = delete;

    std::string Path() const { return m_path.string(); }

private:
    fs::path m_path;
};

int Walk(std::string const& path) {
    CDiskPath directory(&path);
    CFileName found;
    int nFound = 0;
    for (bool fMore = directory.FirstFile(&found, "wav"); fMore; fMore = directory.NextFile(&found))
        ++nFound;
    return nFound;
}

int Find(std::string const& path) {
    std::FILE* const pAnswer = popen(("find '" + path + "' -name '*.wav'").c_str(), "r");
    if (pAnswer == nullptr) return -1;
    char line[4096];
    int nFound = 0;
    while (std::fgets(line, sizeof line, pAnswer) != nullptr) ++nFound;
    pclose(pAnswer);
    return nFound;
}

void Measure(int (*walk)(std::string const&), std::string const& path, CSamples& times) {
    const auto start = std::chrono::steady_clock::now();
    const int nFound = walk(path);
    times.Add(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                  .count());
    if (nFound == kSounds) return;
    std::fprintf(stderr, "bench: %d sound files of %d were found\n", nFound, kSounds);
    std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
    const bool fQuick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const CTree tree;
    CSamples own, find, unused;
    Measure(Walk, tree.Path(), unused);
    for (int nTurn = 0; nTurn < (fQuick ? 3 : 15); ++nTurn) {
        Measure(Walk, tree.Path(), own);
        Measure(Find, tree.Path(), find);
    }
    PrintSeries("directory walk", "FirstFile and NextFile", "ms", own);
    PrintSeries("directory walk", "find", "ms", find);
    return 0;
}
