#include <CoreFoundation/CoreFoundation.h>

#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "FileIO/FileIO.h"
#include "FileIO/FileName.h"
#include "utils/ParameterBlock.h"

namespace {

struct CReleaseData {
    void operator()(CFMutableDataRef data) const { CFRelease(data); }
};

using DataHolder = std::unique_ptr<std::remove_pointer_t<CFMutableDataRef>, CReleaseData>;

}  // namespace

int CParameterBlock::SaveBinarySession(const char* id, CFileName const* file) try {
    const DataHolder data(CFDataCreateMutable(kCFAllocatorDefault, 0));
    const unsigned long length = SaveBinarySessionToMemory(id, data.get());
    if (length == 0) return sessionFileFailed;
    CFileIO output;
    output.Open(file, true, true);
    output.Write(length, CFDataGetBytePtr(data.get()));
    output.Close();
    return sessionDone;
} catch (CCodeException const&) {
    return sessionFileFailed;
} catch (std::bad_alloc const&) {
    return sessionFileFailed;
}

int CParameterBlock::LoadBinarySession(std::vector<const char*> const* ids,
                                       CFileName const* file) try {
    CFileIO input;
    input.Open(file, false, false);
    const unsigned long length = input.GetLength();
    // No image is as long.
    if (length > std::numeric_limits<unsigned int>::max()) return sessionFileFailed;
    std::vector<unsigned char> image(length);
    if (length > 0 && input.Read(length, image.data()) != length) return sessionFileFailed;
    input.Close();
    return LoadBinarySessionFromMemory(ids, image.data(), static_cast<unsigned int>(length));
} catch (CCodeException const&) {
    return sessionFileFailed;
} catch (std::bad_alloc const&) {
    return sessionFileFailed;
}
