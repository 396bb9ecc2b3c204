#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

// Runs a fuzz target's entry over every file of the directories named on the command line, for
// builds without a fuzzing engine. Finding no file is an error: then nothing was tested.
int main(int argc, char** argv) {
    std::size_t files = 0;
    for (int i = 1; i < argc; ++i)
        for (auto const& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            // An exact copy on the heap lets a sanitizer see the smallest step too far.
            const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[bytes.size()]);
            std::copy(bytes.begin(), bytes.end(), copy.get());
            std::printf("%s\n", entry.path().c_str());
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(copy.get(), bytes.size());
            ++files;
        }
    std::printf("%zu files\n", files);
    return files > 0 ? 0 : 1;
}
