#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "link/TANClientInterProcess.h"
#include "platform/Assertion.h"

// A reply of any bytes; the first byte says how often they are repeated, up to megabytes.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    constexpr std::size_t kLongestReply = std::size_t{2} << 20;
    constexpr std::size_t kLongestValue = 4095;
    if (size == 0) return 0;
    const std::string strPiece(reinterpret_cast<char const*>(data + 1), size - 1);
    std::string strReply;
    for (std::size_t n = std::size_t{1} << (data[0] % 21); n > 0; --n) {
        if (strPiece.empty() || strReply.size() + strPiece.size() > kLongestReply) break;
        strReply += strPiece;
    }
    std::vector<std::string> values{"discarded"};
    CTANClientInterProcess().SplitResult(strReply, &values);
    std::size_t nCharacters = 0;
    for (std::string const& strValue : values) {
        TAVARIN_REQUIRE(strValue.size() <= kLongestValue);
        TAVARIN_REQUIRE(strValue.find_first_of(std::string("\r\n\0", 3)) == std::string::npos);
        nCharacters += strValue.size();
    }
    TAVARIN_REQUIRE(nCharacters + values.size() <= strReply.size());
    return 0;
}
