#include "tools/BlockDocument.h"

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <ostream>
#include <type_traits>

#include "tools/BlockByteMap.h"
#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"
#include "utils/ParameterTree.h"

namespace {

struct CReleaseData {
    void operator()(CFMutableDataRef data) const { CFRelease(data); }
};

unsigned char const* BytesOf(std::string const& image) {
    return reinterpret_cast<unsigned char const*>(image.data());
}

std::string LoadBare(std::string const& image, CBlockDocument& document) {
    const long consumed = document.block.LoadBlock(nullptr, image.size(), BytesOf(image));
    if (consumed < 0)
        return "the bare image ends too early or holds an entry that no image can hold; "
               "is it a session image (without --bare)?";
    const auto left = image.size() - static_cast<std::size_t>(consumed);
    if (left == 0) return "";
    return std::to_string(left) +
           " bytes follow the bare image; is it a session image (without "
           "--bare)?";
}

// A value that is cut off reads as nothing; only the bytes themselves tell.
std::string FaultOfBytes(std::string const& image, std::string const& id) {
    std::ostream nowhere(nullptr);
    return WriteByteMap(nowhere, image, &id);
}

std::string LoadSession(std::string const& image, CBlockDocument& document) {
    const std::vector<const char*> ids{document.strId.c_str()};
    switch (document.block.LoadBinarySessionFromMemory(&ids, BytesOf(image),
                                                       static_cast<unsigned int>(image.size()))) {
        case sessionDone:
            return FaultOfBytes(image, document.strId);
        case sessionHeaderFailed:
            return "no acceptable session header for the identifier " + Quoted(document.strId) +
                   "; is it a bare image (--bare) or another identifier (--id)?";
        default:
            return "the body is damaged; what could be read stands above";
    }
}

}  // namespace

std::string IdentifierOf(CBlockForm const& form, std::string const& image,
                         std::string const& path) {
    if (form.fIdGiven) return form.strId;
    const std::size_t end = image.find('\0');
    if (end == std::string::npos)
        throw CToolFailure(exitNegative,
                           Quoted(path) +
                               " is no session image: no zero byte ends an identifier; "
                               "is it a bare image (--bare)?",
                           "", "damaged");
    return image.substr(0, end);
}

std::string LoadImage(CBlockForm const& form, std::string const& image, std::string const& path,
                      CBlockDocument& document) {
    if (image.size() > std::numeric_limits<unsigned int>::max())
        throw CToolFailure(exitNegative,
                           Quoted(path) + " is too long for an image, which ends below 4 GiB");
    document.fBare = form.fBare;
    if (form.fBare) return LoadBare(image, document);
    if (image.empty()) return "it is empty; a session image has a header at least";
    document.strId = IdentifierOf(form, image, path);
    return LoadSession(image, document);
}

std::string MakeImage(CBlockDocument& document) {
    bool hasFileIds = false;
    bool hasZeroBytes = false;
    VisitTree(document.block, [&](CParameter const& parameter) {
        hasFileIds = hasFileIds || parameter.type == tagFileId;
        hasZeroBytes = hasZeroBytes || parameter.name.find('\0') != std::string::npos;
    });
    if (hasFileIds)
        throw CToolFailure(exitTrouble,
                           "a file identity cannot be saved; take out the entries of type fileId");
    if (hasZeroBytes && !document.fBare)
        throw CToolFailure(exitTrouble,
                           "a name holds a zero byte, at which a session image would end it");
    if (document.fBare) {
        unsigned long size = 0;
        const std::unique_ptr<unsigned char[]> bytes(document.block.CreateBlock(&size));
        return {reinterpret_cast<const char*>(bytes.get()), size};
    }
    const std::unique_ptr<std::remove_pointer_t<CFMutableDataRef>, CReleaseData> data(
        CFDataCreateMutable(kCFAllocatorDefault, 0));
    const unsigned long length =
        document.block.SaveBinarySessionToMemory(document.strId.c_str(), data.get());
    if (length == 0)
        throw CToolFailure(
            exitTrouble,
            "there is no such image: a session needs one name at least, ends below 4 GiB, and its "
            "names unfold to a gibibyte at most");
    return {reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())), length};
}
