#include "plugin/WaveHeader.h"

#include <cstdint>
#include <fstream>
#include <string_view>

namespace {

constexpr std::size_t kChunks = 12;  ///< where the first chunk begins, behind RIFF, size and WAVE
constexpr std::size_t kChunkHead = 8;
constexpr std::size_t kLongestHeader = 512;
constexpr std::uint32_t kFloat = 3;
constexpr std::uint32_t kBytesOfSample = 4;

std::string Number(std::uint32_t nValue, int nBytes) {
    std::string strBytes;
    for (int nByte = 0; nByte < nBytes; ++nByte) {
        strBytes += static_cast<char>(nValue >> (8 * nByte) & 0xFF);
    }
    return strBytes;
}

std::uint32_t NumberAt(std::string const& strBytes, std::size_t nAt, int nBytes) {
    std::uint32_t nValue = 0;
    for (int nByte = nBytes - 1; nByte >= 0; --nByte) {
        nValue = nValue << 8 | static_cast<unsigned char>(strBytes[nAt + nByte]);
    }
    return nValue;
}

std::string Chunk(std::string const& strName, std::string const& strContents) {
    return strName + Number(static_cast<std::uint32_t>(strContents.size()), 4) + strContents;
}

/// Where a chunk of the header begins; 0: nowhere.
std::size_t FindChunk(std::string const& strHeader, std::string_view strName) {
    std::size_t nAt = kChunks;
    while (nAt + kChunkHead <= strHeader.size()) {
        if (strHeader.compare(nAt, strName.size(), strName) == 0) return nAt;
        const std::uint32_t nSize = NumberAt(strHeader, nAt + 4, 4);
        nAt += kChunkHead + nSize + nSize % 2;
    }
    return 0;
}

/// The chunks between the file's head and its data, as long together as those that were there.
/// Empty when there is no room for them.
std::string PlainChunks(std::string const& strHeader, std::size_t nFormat, std::size_t nData) {
    const std::size_t nFields = nFormat + kChunkHead;
    const std::uint32_t nChannels = NumberAt(strHeader, nFields + 2, 2);
    const std::uint32_t nFrameSize = kBytesOfSample * nChannels;
    if (nChannels == 0) return {};
    const std::string strFormat = Number(kFloat, 2) + strHeader.substr(nFields + 2, 14);
    const std::string strFrames = Number(NumberAt(strHeader, nData + 4, 4) / nFrameSize, 4);
    const std::string strChunks =
        Chunk("fmt ", strFormat + Number(0, 2)) + Chunk("fact", strFrames);
    const std::size_t nWith = kChunks + strChunks.size() + kChunkHead;
    if (nWith > nData) return {};
    return strChunks + Chunk("JUNK", std::string(nData - nWith, '\0'));
}

}  // namespace

void WritePlainFloatHeader(std::string const& strFile) {
    std::fstream file(strFile, std::ios::in | std::ios::out | std::ios::binary);
    std::string strHeader(kLongestHeader, '\0');
    file.read(strHeader.data(), static_cast<std::streamsize>(strHeader.size()));
    strHeader.resize(static_cast<std::size_t>(file.gcount()));
    if (strHeader.compare(0, 4, "RIFF") != 0) return;
    const std::size_t nFormat = FindChunk(strHeader, "fmt ");
    const std::size_t nData = FindChunk(strHeader, "data");
    if (nFormat == 0 || nData < nFormat) return;
    const std::string strChunks = PlainChunks(strHeader, nFormat, nData);
    file.clear();
    file.seekp(kChunks);
    file.write(strChunks.data(), static_cast<std::streamsize>(strChunks.size()));
}
