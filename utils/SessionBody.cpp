#include "utils/SessionBody.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "utils/ParameterBlockCodec.h"
#include "utils/ParameterTree.h"

namespace {

// A token that no image holds.
constexpr std::uint32_t wrongToken = noToken;

// What an entry takes apart from the bytes of a text: type, token and the longest number.
constexpr std::size_t mostEntryBytes = 24;

// Writes a body in one pass. `tokenOf` gives a parameter's token, or `wrongToken` to give up.
template <typename TokenOf>
class CBodyPass {
public:
    CBodyPass(CByteBuffer& bytes, TokenOf& tokenOf) : m_bytes(bytes), m_tokenOf(tokenOf) {}

    // Whether the whole tree was written.
    bool Write(CParameterBlock const& top) {
        unsigned char* out = StoreToken(top, m_bytes.Room(nullptr, mostEntryBytes));
        if (out == nullptr) return false;
        CLevel level = Open(top, out);
        for (;;) {
            while (level.pNext != level.pEnd) {
                if (level.pEnd - level.pNext > prefetchDistance)
                    PrefetchParameter(level.pNext[prefetchDistance]);
                CParameter const* const parameter = *level.pNext++;
                if (parameter == nullptr) continue;
                ++level.nEntries;
                out = m_bytes.Room(out, mostEntryBytes);
                StoreLittleEndian(parameter->type, out);
                out = StoreToken(*parameter, out + codec::tagSize);
                if (out == nullptr) return false;
                if (parameter->type == tagBlock) {
                    m_open.push_back(level);
                    level = Open(static_cast<CParameterBlock const&>(*parameter), out);
                } else {
                    out = StoreValue(*parameter, out);
                    if (out == nullptr) return false;
                }
            }
            StoreLittleEndian(static_cast<std::uint32_t>(level.nEntries),
                              m_bytes.At(level.nCountAt));
            if (m_open.empty()) break;
            level = m_open.back();
            m_open.pop_back();
        }
        m_bytes.Finish(out);
        return true;
    }

private:
    struct CLevel {
        CParameter* const* pNext;
        CParameter* const* pEnd;
        std::size_t nCountAt;
        std::size_t nEntries;
    };

    CLevel Open(CParameterBlock const& block, unsigned char*& out) {
        CParameter* const* const first = block.parameters.data();
        const CLevel level{first, first + block.parameters.size(), m_bytes.OffsetOf(out), 0};
        out += codec::countSize;
        return level;
    }

    // Null to give up, as below.
    unsigned char* StoreToken(CParameter const& parameter, unsigned char* out) {
        const std::uint32_t token = m_tokenOf(parameter);
        return token != wrongToken ? codec::StoreToken(token, out) : nullptr;
    }

    unsigned char* StoreValue(CParameter const& parameter, unsigned char* out) {
        if (parameter.type == tagString) {
            std::string const& text = static_cast<CStringParameter const&>(parameter).value;
            return codec::StoreText(text, m_bytes.Room(out, codec::lengthSize + text.size()));
        }
        if (parameter.type == tagFileId || !codec::VisitValue(parameter, [&](auto const& value) {
                out = codec::StoreValue(value, out);
            }))
            return StoreOther(parameter, out);
        return out;
    }

    // Types of no image stop the process, but not before it is known that there is a name.
    unsigned char* StoreOther(CParameter const& parameter, unsigned char* out) {
        if (!TokenOf::namesAreKnown) return nullptr;
        out = m_bytes.Room(out, parameter.GetSize());
        return out + parameter.Save(0, out);
    }

    CByteBuffer& m_bytes;
    TokenOf& m_tokenOf;
    std::vector<CLevel> m_open;
};

// Takes the tokens as they stand on the tree and notes what they stand for.
class COldTokens {
public:
    static constexpr bool namesAreKnown = false;

    explicit COldTokens(std::size_t usualNames) : m_nMostNames(usualNames) {
        m_names.resize(codec::largestShortToken + 1, unused);
        m_names[0] = {CNameKey(std::string_view()), 0};
    }

    std::uint32_t operator()(CParameter const& parameter) {
        const CNameKey key(parameter.name);
        const std::uint32_t token = parameter.token;
        if (token < m_names.size() && m_names[token] == key) {
            ++m_names[token].nCount;
            return token;
        }
        return FirstUse(parameter);
    }

    // Whether the tokens seen are those of the most frequent names in turn. Fills `names`.
    bool AreInOrder(std::vector<std::string_view>& names) const {
        const std::size_t used = m_nHighest + 1;
        CNameTable different;
        names.clear();
        names.reserve(m_nHighest);
        for (std::size_t token = 1; token < used; ++token) {
            CName const& name = m_names[token];
            if (name.nCount == 0 || (token > 1 && name.nCount > m_names[token - 1].nCount))
                return false;
            if (different.Add(name) != token - 1) return false;
            names.push_back(name.Text());
        }
        return !names.empty();
    }

private:
    using CName = CNameTable::CName;

    // Apart from the rest, which stays small enough for registers.
    [[gnu::noinline]] std::uint32_t FirstUse(CParameter const& parameter) {
        const std::uint32_t token = parameter.token;
        const std::string_view text = parameter.name;
        if (token == 0 || token == noToken || text.empty() ||
            text.find('\0') != std::string_view::npos)
            return wrongToken;
        if (token >= m_names.size()) {
            // Tokens may be anything: what they ask for stays in proportion to the tree.
            if (token > m_nMostNames) return wrongToken;
            m_names.resize(std::min(m_nMostNames + 1, token * std::size_t{2}), unused);
        }
        if (m_names[token].nCount != 0) return wrongToken;
        m_names[token] = {CNameKey(text), 1};
        m_nHighest = std::max(m_nHighest, token);
        return token;
    }

    static inline const CName unused{CNameKey::OfNoName(), 0};

    std::size_t m_nMostNames;
    std::uint32_t m_nHighest = 0;
    std::vector<CName> m_names;
};

// Gives each parameter its token, in the order in which the names were counted.
class CNewTokens {
public:
    static constexpr bool namesAreKnown = true;

    // Counts the names of the tree.
    explicit CNewTokens(CParameterBlock& top) {
        Count(top);
        VisitTree(top, [this](CParameter const& parameter) { Count(parameter); });
    }

    bool CanBeSaved() const {
        auto const& names = m_table.Names();
        if (names.empty()) return false;
        return std::none_of(names.begin(), names.end(), [](CNameTable::CName const& name) {
            return name.Text().find('\0') != std::string_view::npos;
        });
    }

    // The most frequent names first, equally frequent ones as they came: counted, not compared, for
    // there may be as many names as parameters.
    std::vector<std::string_view> Order() {
        auto const& names = m_table.Names();
        std::uint32_t highest = 0;
        for (CNameTable::CName const& name : names) highest = std::max(highest, name.nCount);
        std::vector<std::uint32_t> place(highest + std::size_t{1});
        for (CNameTable::CName const& name : names) ++place[highest - name.nCount];
        std::uint32_t before = 0;
        for (std::uint32_t& start : place) before += std::exchange(start, before);
        std::vector<std::string_view> ordered(names.size());
        m_tokens.reserve(names.size() + 1);
        m_tokens.push_back(0);
        for (CNameTable::CName const& name : names) {
            const std::uint32_t position = place[highest - name.nCount]++;
            ordered[position] = name.Text();
            m_tokens.push_back(position + 1);
        }
        return ordered;
    }

    std::uint32_t operator()(CParameter const& parameter) {
        const std::uint32_t token = m_tokens[m_uses[m_nNextUse++]];
        const_cast<CParameter&>(parameter).token = token;
        return token;
    }

private:
    void Count(CParameter const& parameter) {
        m_uses.push_back(parameter.name.empty() ? 0 : m_table.Add(CNameKey(parameter.name)) + 1);
    }

    CNameTable m_table;
    // The names of all parameters in the order of the walk: 0 for none, else from 1.
    std::vector<std::uint32_t> m_uses;
    std::size_t m_nNextUse = 0;
    std::vector<std::uint32_t> m_tokens;
};

}  // namespace

bool CSessionBody::Write(CParameterBlock& top) {
    return WriteWithOldTokens(top) || WriteWithNewTokens(top);
}

bool CSessionBody::WriteWithOldTokens(CParameterBlock& top) {
    constexpr std::size_t freeNames = 1024;
    COldTokens tokens(freeNames + top.parameters.size());
    return CBodyPass(m_bytes, tokens).Write(top) && tokens.AreInOrder(m_names);
}

bool CSessionBody::WriteWithNewTokens(CParameterBlock& top) {
    CNewTokens tokens(top);
    if (!tokens.CanBeSaved()) return false;
    m_names = tokens.Order();
    return CBodyPass(m_bytes, tokens).Write(top);
}
