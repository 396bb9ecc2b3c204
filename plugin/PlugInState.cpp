#include "plugin/PlugInState.h"

#include <CoreFoundation/CoreFoundation.h>

#include <boost/crc.hpp>
#include <memory>

#include "utils/ParameterBlock.h"

namespace {

// The form of the image. Readers refuse any other.
constexpr char szFormat[] = "Tavarin plug-in 1";
constexpr std::size_t kChecksumSize = 4;

struct CReleaseData {
    void operator()(CFMutableDataRef data) const { CFRelease(data); }
};

std::string Checksum(char const* bytes, std::size_t nBytes) {
    boost::crc_32_type crc;
    crc.process_bytes(bytes, nBytes);
    std::string strSum;
    for (std::size_t nByte = 0; nByte < kChecksumSize; ++nByte) {
        strSum += static_cast<char>(crc.checksum() >> (8 * nByte) & 0xFF);
    }
    return strSum;
}

void AddTake(CParameterBlock& block, CTake const& take) {
    CParameterBlock parameters;
    parameters.AddParameter("File", take.strFile.c_str());
    parameters.AddParameter("Position", static_cast<long long>(take.lPosition));
    parameters.AddParameter("Frames", static_cast<long long>(take.lFrames));
    parameters.AddParameter("End", static_cast<int>(take.end));
    parameters.AddParameter("Track", static_cast<int>(take.nTrack));
    parameters.AddParameter("Handled", take.fHandled);
    block.AddParameter("Take", &parameters);
}

bool FindNumber(CParameterBlock const& block, const char* szName, std::int64_t* lNumber) {
    long long lFound = 0;
    if (!block.FindParameter(szName, &lFound, 0LL)) return false;
    *lNumber = lFound;
    return true;
}

bool FindTake(CParameterBlock const& block, CTake* take) {
    int nEnd = 0;
    const bool fWhole = block.FindParameter("File", &take->strFile, "") &&
                        FindNumber(block, "Position", &take->lPosition) &&
                        FindNumber(block, "Frames", &take->lFrames) &&
                        block.FindParameter("End", &nEnd, 0) &&
                        block.FindParameter("Track", &take->nTrack, -1) &&
                        block.FindParameter("Handled", &take->fHandled, false);
    const bool fKnown = nEnd >= 0 && nEnd <= static_cast<int>(TakeEnd::DiskFailed);
    take->end = static_cast<TakeEnd>(nEnd);
    return fWhole && fKnown && take->lFrames >= 0;
}

bool FindTakes(CParameterBlock const& block, std::vector<CTake>* takes) {
    CParameterBlock* found = nullptr;
    CParameterBlock::position where = 0;
    bool fMore = block.FindFirstParameter("Take", &found, &where);
    while (fMore) {
        takes->emplace_back();
        if (!FindTake(*found, &takes->back())) return false;
        fMore = block.FindNextParameter("Take", &found, &where);
    }
    int nTakes = 0;
    return block.FindParameter("Takes", &nTakes, 0) &&
           takes->size() == static_cast<std::size_t>(nTakes);
}

}  // namespace

std::string SaveState(CPlugInState const& state) {
    CParameterBlock block;
    block.AddParameter("Kind", static_cast<int>(state.nKind));
    block.AddParameter("Capture directory", state.strCaptureDirectory.c_str());
    block.AddParameter("Track", static_cast<int>(state.nTrack));
    block.AddParameter("Takes", static_cast<int>(state.takes.size()));
    for (CTake const& take : state.takes) AddTake(block, take);
    block.AddParameter("Returned file", state.strReturnedFile.c_str());
    block.AddParameter("Returned position", static_cast<long long>(state.lReturnedPosition));

    const std::unique_ptr<__CFData, CReleaseData> data(CFDataCreateMutable(nullptr, 0));
    const unsigned long nSize = block.SaveBinarySessionToMemory(szFormat, data.get());
    if (nSize == 0) return {};
    std::string strImage(reinterpret_cast<char const*>(CFDataGetBytePtr(data.get())), nSize);
    return strImage + Checksum(strImage.data(), strImage.size());
}

bool LoadState(std::string const& strImage, std::int32_t nKind, CPlugInState* state,
               std::string* strReason) {
    *strReason = "The saved state of this plug-in is damaged and was not loaded.";
    if (strImage.size() <= kChecksumSize) return false;
    const std::size_t nSize = strImage.size() - kChecksumSize;
    if (strImage.substr(nSize) != Checksum(strImage.data(), nSize)) return false;

    CParameterBlock block;
    const std::vector<const char*> formats{szFormat};
    if (block.LoadBinarySessionFromMemory(&formats,
                                          reinterpret_cast<unsigned char const*>(strImage.data()),
                                          static_cast<unsigned int>(nSize)) != sessionDone) {
        return false;
    }
    CPlugInState loaded;
    const bool fWhole = block.FindParameter("Kind", &loaded.nKind, -1) &&
                        block.FindParameter("Capture directory", &loaded.strCaptureDirectory, "") &&
                        block.FindParameter("Track", &loaded.nTrack, 0) &&
                        FindTakes(block, &loaded.takes) &&
                        block.FindParameter("Returned file", &loaded.strReturnedFile, "") &&
                        FindNumber(block, "Returned position", &loaded.lReturnedPosition);
    if (!fWhole) return false;
    if (loaded.nKind != nKind) {
        *strReason = "The saved state is that of another plug-in and was not loaded.";
        return false;
    }
    *state = loaded;
    strReason->clear();
    return true;
}
