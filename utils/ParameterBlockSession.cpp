#include <algorithm>
#include <limits>
#include <new>
#include <numeric>
#include <string_view>
#include <utility>

#include "utils/NameTable.h"
#include "utils/ParameterReader.h"
#include "utils/ParameterTree.h"

namespace {

using NameCounts = std::vector<std::pair<std::string, int>>;
using Names = std::vector<std::string_view>;

constexpr std::uint32_t formatVersion = 100;
constexpr std::size_t numbersInHeader = 12;
constexpr std::size_t spareBytes = 32;
constexpr unsigned int badHeader = 0xFFFFFFFF;

std::string_view OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

std::size_t SizeOfHeader(const char* id, Names const& names) {
    std::size_t size = OrEmpty(id).size() + 1 + numbersInHeader;
    for (std::string_view name : names) size += name.size() + 1;
    return size;
}

unsigned char* StoreTerminated(std::string_view text, unsigned char* out) {
    std::memcpy(out, text.data(), text.size());
    out[text.size()] = 0;
    return out + text.size() + 1;
}

unsigned char* StoreHeader(const char* id, Names const& names, unsigned char* out) {
    out = StoreTerminated(OrEmpty(id), out);
    unsigned char* const numbers = out;
    out += numbersInHeader;
    for (std::string_view name : names) out = StoreTerminated(name, out);
    StoreLittleEndian(formatVersion, numbers);
    StoreLittleEndian(static_cast<std::uint32_t>(out - numbers - numbersInHeader), numbers + 4);
    StoreLittleEndian(static_cast<std::uint32_t>(names.size()), numbers + 8);
    return out;
}

Names TextsOf(NameCounts const* counts) {
    Names names;
    if (counts != nullptr)
        for (auto const& name : *counts) names.push_back(name.first);
    return names;
}

// What a session makes of a tree: the names, the token of each, and the body.
class CSessionBody {
public:
    explicit CSessionBody(CParameterBlock& top) : m_top(top) {
        Count(top);
        VisitTree(
            top, [this](CParameter const& parameter) { Count(parameter); }, AsBlock, m_stack);
        Order();
    }

    bool CanBeSaved() const {
        return !m_names.empty() && m_names.size() <= codec::largestToken && m_fKnownTypes &&
               m_nUnfolded <= codec::mostUnfoldedNames;
    }

    Names const& InOrder() const { return m_names; }

    // Gives every parameter its token; afterwards the tree itself can tell the size.
    std::size_t Measure() {
        if (m_fOwnClasses) return m_nSize;
        auto use = m_uses.begin();
        m_top.token = m_tokens[*use++];
        VisitTree(m_top, [&](CParameter& parameter) { parameter.token = m_tokens[*use++]; });
        return m_top.GetSize();
    }

    void Save(unsigned char* out) {
        if (!m_fOwnClasses)
            m_top.Save(0, out);
        else
            SaveOwnClasses(out);
    }

private:
    void Count(CParameter const& parameter) {
        m_uses.push_back(m_table.Add(parameter.name));
        m_fKnownTypes = m_fKnownTypes && parameter.type - tagString <= tagBinaryBlock - tagString;
        m_fOwnClasses = m_fOwnClasses && IsOfOwnClass(parameter);
        if (m_fOwnClasses) m_nSize += codec::tagSize + OwnValueSize(parameter);
    }

    // The most frequent names first, equally frequent ones as the tree first uses them.
    void Order() {
        auto const& names = m_table.Names();
        std::vector<std::uint32_t> order(names.size() - 1);
        std::iota(order.begin(), order.end(), 1);
        const auto before = [&names](std::uint32_t left, std::uint32_t right) {
            const std::uint32_t leftCount = names[left].nCount, rightCount = names[right].nCount;
            return leftCount != rightCount ? leftCount > rightCount : left < right;
        };
        if (!std::is_sorted(order.begin(), order.end(), before))
            std::sort(order.begin(), order.end(), before);
        m_tokens.resize(names.size());
        m_names.reserve(order.size());
        for (std::uint32_t index : order) {
            m_names.push_back(names[index].text);
            m_tokens[index] = static_cast<std::uint32_t>(m_names.size());
        }
        // The outermost block has no tag, and its own name is read once only.
        m_nSize -= codec::tagSize;
        m_nUnfolded -= names[m_uses.front()].text.size();
        for (std::size_t index = 0; index < names.size(); ++index) {
            const std::uint64_t uses = names[index].nCount;
            m_nSize += uses * codec::TokenSize(m_tokens[index]);
            m_nUnfolded += uses * names[index].text.size();
        }
    }

    void SaveOwnClasses(unsigned char* out) {
        auto use = m_uses.begin();
        m_top.token = m_tokens[*use++];
        out = SaveCount(m_top, codec::SaveToken(m_top.token, out));
        const auto save = [&](CParameter& parameter) {
            parameter.token = m_tokens[*use++];
            StoreLittleEndian(parameter.type, out);
            out = codec::SaveToken(parameter.token, out + codec::tagSize);
            if (parameter.type == tagBlock)
                out = SaveCount(static_cast<CParameterBlock&>(parameter), out);
            else
                WithValueClass(parameter.type, [&](auto c) {
                    using Class = typename decltype(c)::type;
                    out = codec::SaveValue(static_cast<Class const&>(parameter).value, out);
                    return true;
                });
        };
        VisitTree(m_top, save, AsBlock, m_stack);
    }

    CParameterBlock& m_top;
    std::vector<CParameterRange> m_stack;
    CNameTable m_table;
    std::vector<std::uint32_t> m_uses;  // the names of all parameters as the walk goes
    std::vector<std::uint32_t> m_tokens;
    Names m_names;
    std::size_t m_nSize = 0;
    std::uint64_t m_nUnfolded = 0;
    bool m_fKnownTypes = true;
    bool m_fOwnClasses = true;
};

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

// Where the names of an image stand, and how many there are.
struct CNameTablePlace {
    std::size_t nStart = 0;
    std::uint32_t nCount = 0;
    std::string_view bytes;
};

// Whether the image begins with a header that a body may follow.
bool FindNames(std::vector<const char*> const* ids, std::size_t size, unsigned char const* data,
               CNameTablePlace& names) {
    const long idLength = ids != nullptr ? AcceptedIdLength(*ids, size, data) : -1;
    if (idLength < 0) return false;
    names.nStart = static_cast<std::size_t>(idLength) + 1 + numbersInHeader;
    const auto sizeOfNames = LoadLittleEndian<std::uint32_t>(data + names.nStart - 8);
    names.nCount = LoadLittleEndian<std::uint32_t>(data + names.nStart - 4);
    if (size - names.nStart <= sizeOfNames) return false;
    names.bytes = {reinterpret_cast<const char*>(data) + names.nStart, sizeOfNames};
    return names.nCount <= sizeOfNames;
}

// Calls `keep` with every name and where the next one begins. Returns where that is behind the last
// one, its terminator counted even where the table ends before it; -1 when names are missing.
template <typename Keep>
long ReadNames(CNameTablePlace const& names, Keep keep) {
    std::size_t next = 0;
    for (std::uint32_t read = 0; read < names.nCount; ++read) {
        if (next >= names.bytes.size()) return -1;
        const std::string_view rest = names.bytes.substr(next);
        const std::string_view name = rest.substr(0, rest.find('\0'));
        next += name.size() + 1;
        keep(name, next);
    }
    return static_cast<long>(next);
}

// The names of a session where its image has them, by their tokens. A table of strings would take
// sixteen times the bytes of a short name.
class CNamesInImage {
public:
    static constexpr bool fStandBeforeBody = true;

    explicit CNamesInImage(CNameTablePlace const& names) : m_pText(names.bytes.data()) {
        m_starts.reserve(names.nCount + std::size_t{1});
        m_nSize = ReadNames(names, [this](std::string_view, std::size_t next) {
            m_starts.push_back(static_cast<std::uint32_t>(next));
        });
    }

    // The bytes that the names take; -1 when there are fewer than the header says.
    long Bytes() const { return m_nSize; }

    std::size_t size() const { return m_starts.size(); }

    std::string_view operator[](std::size_t token) const {
        if (token == 0) return {};
        const std::size_t start = m_starts[token - 1];
        return {m_pText + start, m_starts[token] - start - 1};
    }

private:
    const char* m_pText;
    std::vector<std::uint32_t> m_starts{0};
    long m_nSize = -1;
};

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
    return SizeOfHeader(id, TextsOf(names));
}

unsigned long CParameterBlock::SaveHeader(const char* id, unsigned long, NameCounts const* names,
                                          unsigned char* out) const {
    return static_cast<unsigned long>(StoreHeader(id, TextsOf(names), out) - out);
}

unsigned int CParameterBlock::LoadHeader(std::vector<const char*> const* ids, unsigned int size,
                                         std::vector<std::string>* names,
                                         unsigned char const* data) const {
    CNameTablePlace place;
    if (!FindNames(ids, size, data, place)) return badHeader;
    names->assign(1, std::string());
    names->reserve(place.nCount + std::size_t{1});
    const long bytes = ReadNames(
        place, [names](std::string_view name, std::size_t) { names->emplace_back(name); });
    return bytes < 0 ? badHeader : static_cast<unsigned int>(place.nStart + bytes);
}

unsigned long CParameterBlock::SaveBinarySessionToMemory(const char* id,
                                                         CFMutableDataRef data) try {
    CSessionBody body(*this);
    if (!body.CanBeSaved()) return 0;
    const std::size_t headerSize = SizeOfHeader(id, body.InOrder());
    const std::size_t length = headerSize + body.Measure();
    if (length > std::numeric_limits<std::uint32_t>::max()) return 0;
    CFDataSetLength(data, static_cast<CFIndex>(length + spareBytes));
    unsigned char* const image = CFDataGetMutableBytePtr(data);
    StoreHeader(id, body.InOrder(), image);
    body.Save(image + headerSize);
    std::memset(image + length, 0, spareBytes);
    return length;
} catch (std::bad_alloc const&) {
    return 0;
}

int CParameterBlock::LoadBinarySessionFromMemory(std::vector<const char*> const* ids,
                                                 unsigned char const* data, unsigned int size) try {
    if (data == nullptr || size == 0) return sessionDone;
    CNameTablePlace place;
    if (!FindNames(ids, size, data, place)) return sessionHeaderFailed;
    const CNamesInImage names(place);
    if (names.Bytes() < 0) return sessionHeaderFailed;
    const std::size_t header = place.nStart + static_cast<std::size_t>(names.Bytes());
    CParameterReader reader(*this, &names, size - header, data + header);
    reader.ReadOwnName();
    Clear();
    return reader.ReadList() ? sessionDone : sessionBodyFailed;
} catch (std::bad_alloc const&) {
    return sessionBodyFailed;
}
