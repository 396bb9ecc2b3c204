#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/LoadedTree.h"
#include "platform/Assertion.h"

// A bare image; the first byte chooses between inline names and a small table of names.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size == 0) return 0;
    static const std::vector<std::string> table{"", "A", "Name", std::string(40, 'n')};
    std::vector<std::string> const* const names = (data[0] & 1) != 0 ? &table : nullptr;
    CParameterBlock block;
    const long consumed = block.LoadBlock(names, size - 1, data + 1);
    TAVARIN_REQUIRE(consumed >= -1 && consumed <= static_cast<long>(size - 1));
    UseLoadedTree(block);
    return 0;
}
