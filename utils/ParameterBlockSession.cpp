#include <algorithm>
#include <limits>
#include <numeric>
#include <string_view>
#include <utility>

#include "utils/ParameterBlockCodec.h"
#include "utils/ParameterTree.h"
#include "utils/SessionBody.h"

namespace {

using NameCounts = std::vector<std::pair<std::string, int>>;

constexpr std::uint32_t formatVersion = 100;
constexpr std::size_t numbersInHeader = 12;
constexpr std::size_t spareBytes = 32;
constexpr unsigned int badHeader = 0xFFFFFFFF;

std::string_view OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

std::size_t SizeOfNames(NameCounts const& names) {
    std::size_t size = 0;
    for (auto const& name : names) size += name.first.size() + 1;
    return size;
}

unsigned char* StoreTerminated(std::string_view text, unsigned char* out) {
    std::memcpy(out, text.data(), text.size());
    out[text.size()] = 0;
    return out + text.size() + 1;
}

unsigned char* StoreHeaderStart(const char* id, std::size_t sizeOfNames, std::size_t countOfNames,
                                unsigned char* out) {
    out = StoreTerminated(OrEmpty(id), out);
    StoreLittleEndian(formatVersion, out);
    StoreLittleEndian(static_cast<std::uint32_t>(sizeOfNames), out + 4);
    StoreLittleEndian(static_cast<std::uint32_t>(countOfNames), out + 8);
    return out + numbersInHeader;
}

// The length of the first identifier that the data begins with and that leaves room for the rest
// of a header; -1 when there is none.
long AcceptedIdLength(std::vector<const char*> const& ids, std::size_t size,
                      unsigned char const* data) {
    for (const char* id : ids) {
        const std::string_view text = OrEmpty(id);
        if (size <= text.size() || std::memcmp(data, text.data(), text.size()) != 0) continue;
        if (size - (text.size() + 1) > numbersInHeader) return static_cast<long>(text.size());
    }
    return -1;
}

// Reads `count` names into `names` and returns the bytes they take, the terminator of the last one
// included even where the table ends before it; 0 when the table holds fewer names.
std::size_t LoadNames(std::string_view table, std::uint32_t count,
                      std::vector<std::string>& names) {
    if (count > table.size()) return 0;
    names.reserve(count + std::size_t{1});
    std::size_t consumed = 0;
    std::uint32_t read = 0;
    for (; read < count && consumed < table.size(); ++read) {
        const std::string_view rest = table.substr(consumed);
        const std::string_view name = rest.substr(0, rest.find('\0'));
        names.emplace_back(name);
        consumed += name.size() + 1;
    }
    return read == count ? consumed : 0;
}

}  // namespace

bool IntCmp(std::pair<std::string, int> const& a, std::pair<std::string, int> const& b) {
    return a.second > b.second;
}

void CParameterBlock::TokenizeNames(std::map<std::string, int>& counts) const {
    VisitTree(*this, [&](CParameter const& parameter) { parameter.AddNameToMap(counts); });
}

void CParameterBlock::SetTokens(std::map<std::string, int> const& tokens) {
    VisitTree(*this, [&](CParameter& parameter) { parameter.UpdateTokenFromMap(tokens); });
}

unsigned long CParameterBlock::GetSizeOfHeader(const char* id, NameCounts const* names) const {
    const std::size_t sizeOfNames = names != nullptr ? SizeOfNames(*names) : 0;
    return OrEmpty(id).size() + 1 + numbersInHeader + sizeOfNames;
}

unsigned long CParameterBlock::SaveHeader(const char* id, unsigned long, NameCounts const* names,
                                          unsigned char* out) const {
    static NameCounts const none;
    NameCounts const& list = names != nullptr ? *names : none;
    unsigned char* end = StoreHeaderStart(id, SizeOfNames(list), list.size(), out);
    for (auto const& name : list) end = StoreTerminated(name.first, end);
    return static_cast<unsigned long>(end - out);
}

unsigned int CParameterBlock::LoadHeader(std::vector<const char*> const* ids, unsigned int size,
                                         std::vector<std::string>* names,
                                         unsigned char const* data) const {
    if (ids == nullptr) return badHeader;
    const long idLength = AcceptedIdLength(*ids, size, data);
    if (idLength < 0) return badHeader;
    const std::size_t start = static_cast<std::size_t>(idLength) + 1 + numbersInHeader;
    const auto sizeOfNames = LoadLittleEndian<std::uint32_t>(data + start - 8);
    const auto count = LoadLittleEndian<std::uint32_t>(data + start - 4);
    if (size - start <= sizeOfNames) return badHeader;

    names->assign(1, std::string());
    const std::string_view table(reinterpret_cast<const char*>(data) + start, sizeOfNames);
    const std::size_t consumed = LoadNames(table, count, *names);
    if (consumed == 0 && count != 0) return badHeader;
    return static_cast<unsigned int>(start + consumed);
}

unsigned long CParameterBlock::SaveBinarySessionToMemory(const char* id, CFMutableDataRef data) {
    CSessionBody body;
    if (!body.Write(*this)) return 0;
    auto const& names = body.Names();
    const std::size_t sizeOfNames =
        std::accumulate(names.begin(), names.end(), names.size(),
                        [](std::size_t sum, std::string_view name) { return sum + name.size(); });
    const auto bytes = body.Bytes();
    const std::size_t length =
        OrEmpty(id).size() + 1 + numbersInHeader + sizeOfNames + bytes.size();
    if (length > std::numeric_limits<std::uint32_t>::max()) return 0;
    CFDataSetLength(data, static_cast<CFIndex>(length + spareBytes));
    unsigned char* out = CFDataGetMutableBytePtr(data);
    out = StoreHeaderStart(id, sizeOfNames, names.size(), out);
    for (std::string_view name : names) out = StoreTerminated(name, out);
    std::memcpy(out, bytes.data(), bytes.size());
    std::memset(out + bytes.size(), 0, spareBytes);
    return length;
}

int CParameterBlock::LoadBinarySessionFromMemory(std::vector<const char*> const* ids,
                                                 unsigned char const* data, unsigned int size) {
    if (data == nullptr || size == 0) return sessionDone;
    std::vector<std::string> names;
    const unsigned int headerLength = LoadHeader(ids, size, &names, data);
    if (headerLength == badHeader) return sessionHeaderFailed;
    const unsigned long loaded = Load(&names, size - headerLength, data + headerLength);
    return loaded == ~0UL ? sessionBodyFailed : sessionDone;
}
