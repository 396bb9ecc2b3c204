#include <CoreFoundation/CoreFoundation.h>

#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "FileIO/FileIO.h"
#include "FileIO/FileName.h"
#include "utils/ParameterBlock.h"

namespace {

struct CReleaseData {
    void operator()(CFMutableDataRef data) const { CFRelease(data); }
};

using DataHolder = std::unique_ptr<std::remove_pointer_t<CFMutableDataRef>, CReleaseData>;

struct CFileBytes {
    std::unique_ptr<unsigned char[]> bytes;
    unsigned int length = 0;
};

// Whether the whole file was read; a file that an image cannot be is not.
bool ReadWhole(CFileName const* name, CFileBytes& out) {
    CFileIO file;
    file.Open(name, false, false);
    const unsigned long length = file.GetLength();
    if (length > std::numeric_limits<unsigned int>::max()) return false;
    out.length = static_cast<unsigned int>(length);
    if (length == 0) return true;
    out.bytes = std::make_unique_for_overwrite<unsigned char[]>(length);
    return file.Read(length, out.bytes.get()) == length;
}

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
    CFileBytes image;
    if (!ReadWhole(file, image)) return sessionFileFailed;
    return LoadBinarySessionFromMemory(ids, image.bytes.get(), image.length);
} catch (CCodeException const&) {
    return sessionFileFailed;
} catch (std::bad_alloc const&) {
    return sessionFileFailed;
}
