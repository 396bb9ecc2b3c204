#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#include "utils/NameTable.h"
#include "utils/ParameterPool.h"
#include "utils/ParameterTree.h"

namespace {

using NameCounts = std::vector<std::pair<std::string, int>>;
using Names = std::vector<std::string_view>;
using codec::countSize;
using codec::tagSize;

constexpr std::uint32_t formatVersion = 100;
constexpr std::size_t numbersInHeader = 12;
constexpr std::size_t spareBytes = 32;

// The block that a parameter is, if what its class does is known: a loop may go through it then,
// while a derived class is asked for its own way.
CParameterBlock* AsOwnBlock(CParameter* parameter) {
    CParameterBlock* const block = AsBlock(parameter);
    return block != nullptr && IsExactly<CParameterBlock>(*block) ? block : nullptr;
}

// Null entries of the list are not written.
unsigned char* SaveCount(CParameterBlock const& block, unsigned char* out) {
    const auto nulls = std::count(block.parameters.begin(), block.parameters.end(), nullptr);
    StoreLittleEndian(
        static_cast<std::uint32_t>(block.parameters.size()) - static_cast<std::uint32_t>(nulls),
        out);
    return out + countSize;
}

std::size_t SizeOfParameters(CParameterBlock const& block) {
    std::size_t size = countSize;
    const auto add = [&size](CParameter& parameter) {
        const bool plain = AsOwnBlock(&parameter) != nullptr;
        size += tagSize + (plain ? parameter.GetSizeOfName() + countSize : parameter.GetSize());
    };
    VisitTree(block, add, AsOwnBlock);
    return size;
}

unsigned char* SaveParameters(CParameterBlock const& block, unsigned char* out) {
    out = SaveCount(block, out);
    const auto save = [&out](CParameter& parameter) {
        StoreLittleEndian(parameter.type, out);
        out += tagSize;
        if (CParameterBlock const* nested = AsOwnBlock(&parameter))
            out = SaveCount(*nested, out + parameter.SaveName(out));
        else
            out += parameter.Save(0, out);
    };
    VisitTree(block, save, AsOwnBlock);
    return out;
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
    unsigned char* const numbers = StoreTerminated(OrEmpty(id), out);
    out = numbers + numbersInHeader;
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
        m_stack = VisitTree(top, [this](CParameter const& parameter) { Count(parameter); });
        Order();
    }

    bool CanBeSaved() const {
        return !m_names.empty() && m_names.size() <= codec::largestToken && m_fKnownTypes &&
               m_nUnfolded <= codec::mostUnfoldedNames;
    }

    Names const& InOrder() const { return m_names; }

    // Where a class is foreign, the tree gets its tokens first and then measures itself.
    std::size_t Measure() {
        if (m_fOwnClasses) return m_nSize;
        auto use = m_uses.begin();
        m_top.token = m_tokens[*use++];
        VisitTree(m_top, [&](CParameter& parameter) { parameter.token = m_tokens[*use++]; });
        return m_top.GetSize();
    }

    void Save(unsigned char* out) {
        if (m_fOwnClasses)
            SaveOwnClasses(out);
        else
            m_top.Save(0, out);
    }

private:
    void Count(CParameter const& parameter) {
        m_uses.push_back(m_table.Add(parameter.name));
        m_fKnownTypes = m_fKnownTypes && parameter.type - tagString <= tagBinaryBlock - tagString;
        m_fOwnClasses = m_fOwnClasses && AddOwnSize(parameter);
    }

    // Adds the tag and the bytes behind the name. False for a class that is not known.
    bool AddOwnSize(CParameter const& parameter) {
        m_nSize += tagSize;
        if (parameter.type == tagBlock) {
            m_nSize += countSize;
            return IsExactly<CParameterBlock>(parameter);
        }
        return WithValueClass(parameter.type, [&](auto c) {
            using Class = typename decltype(c)::type;
            m_nSize += codec::ValueSize(static_cast<Class const&>(parameter).value);
            return IsExactly<Class>(parameter);
        });
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
        m_nSize -= tagSize;
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
            out = codec::SaveToken(parameter.token, out + tagSize);
            if (parameter.type == tagBlock)
                out = SaveCount(static_cast<CParameterBlock&>(parameter), out);
            else
                WithValueClass(parameter.type, [&](auto c) {
                    using Class = typename decltype(c)::type;
                    out = codec::SaveValue(static_cast<Class const&>(parameter).value, out);
                    return true;
                });
        };
        VisitTree(m_top, save, AsBlock, std::move(m_stack));
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

}  // namespace

bool IntCmp(std::pair<std::string, int> const& a, std::pair<std::string, int> const& b) {
    return a.second > b.second;
}

unsigned long CParameterBlock::GetSize() const {
    return GetSizeOfName() + SizeOfParameters(*this);
}

unsigned long CParameterBlock::Save(unsigned long, unsigned char* out) const {
    return static_cast<unsigned long>(SaveParameters(*this, out + SaveName(out)) - out);
}

unsigned char* CParameterBlock::CreateBlock(unsigned long* size) const {
    *size = SizeOfParameters(*this);
    auto image = std::make_unique<unsigned char[]>(*size);
    SaveParameters(*this, image.get());
    return image.release();
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
