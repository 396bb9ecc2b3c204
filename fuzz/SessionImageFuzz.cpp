#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/LoadedTree.h"
#include "platform/Assertion.h"

namespace {

// Stops a load after as many nested blocks as the image's last byte says.
class CStopAfter : public CProgress {
public:
    explicit CStopAfter(unsigned blocks) : m_nLeft(blocks) {}
    bool Progress(unsigned long) override { return m_nLeft-- == 0; }

private:
    unsigned m_nLeft;
};

}  // namespace

// A session image with an identifier of two bytes, of one, or of none.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static const std::vector<const char*> ids{"XY", "Z", ""};
    CParameterBlock block;
    const int status =
        block.LoadBinarySessionFromMemory(&ids, data, static_cast<unsigned int>(size));
    TAVARIN_REQUIRE(status == sessionDone || status == sessionBodyFailed ||
                    status == sessionHeaderFailed);
    UseLoadedTree(block);
    if (size == 0) return 0;
    CStopAfter progress(data[size - 1]);
    CParameterBlock stopped(&progress, size);
    stopped.LoadBinarySessionFromMemory(&ids, data, static_cast<unsigned int>(size));
    return 0;
}
