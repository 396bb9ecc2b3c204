#include "fuzz/LoadedTree.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <vector>

#include "platform/Assertion.h"
#include "utils/ParameterTree.h"

namespace {

// What a tree must be free of for its image to exist, and for that image to be loaded as its equal.
struct CContents {
    bool fFileIds = false;
    bool fNotANumber = false;
    bool fZeroInName = false;
};

CContents ContentsOf(CParameterBlock const& block) {
    CContents contents;
    VisitTree(block, [&](CParameter& parameter) {
        contents.fFileIds = contents.fFileIds || parameter.type == tagFileId;
        // A session ends a name there, so that it comes back as another one.
        contents.fZeroInName =
            contents.fZeroInName || parameter.name.find('\0') != std::string::npos;
        if (parameter.type != tagBlock && !parameter.operator==(parameter))
            contents.fNotANumber = true;
    });
    return contents;
}

void CheckBareImage(CParameterBlock const& block, bool comparable) {
    unsigned long size = 0;
    const std::unique_ptr<unsigned char[]> image(block.CreateBlock(&size));
    CParameterBlock again;
    TAVARIN_REQUIRE(again.LoadBlock(nullptr, size, image.get()) == static_cast<long>(size));
    CParameterBlock unnamed("", &block);
    TAVARIN_REQUIRE(!comparable || again == unnamed);
}

void CheckSession(CParameterBlock& block, bool comparable) {
    CFMutableDataRef data = CFDataCreateMutable(kCFAllocatorDefault, 0);
    const unsigned long length = block.SaveBinarySessionToMemory("id", data);
    const std::vector<const char*> ids{"id"};
    CParameterBlock again;
    const int status = again.LoadBinarySessionFromMemory(&ids, CFDataGetBytePtr(data),
                                                         static_cast<unsigned int>(length));
    CFRelease(data);
    if (length == 0) return;
    TAVARIN_REQUIRE(status == sessionDone);
    TAVARIN_REQUIRE(!comparable || again == block);
}

}  // namespace

void UseLoadedTree(CParameterBlock const& loaded) {
    const CContents contents = ContentsOf(loaded);
    // A copy has no tokens, so its bare image stands for itself.
    CParameterBlock copy("copy", &loaded);
    std::map<std::string, int> counts;
    copy.TokenizeNames(counts);
    VisitTree(copy, [](CParameter& parameter) { parameter.token = noToken; });
    CParameterBlock* nested = nullptr;
    CParameterBlock::position where{};
    for (bool found = loaded.FindFirstParameter("A", &nested, &where); found;)
        found = loaded.FindNextParameter("A", &nested, &where);
    CParameterBlock second(copy);
    TAVARIN_REQUIRE(contents.fNotANumber || second == copy);
    TAVARIN_REQUIRE(second.GetSize() == copy.GetSize());
    if (contents.fFileIds) return;
    CheckBareImage(copy, !contents.fNotANumber);
    CheckSession(second, !contents.fNotANumber && !contents.fZeroInName);
}
