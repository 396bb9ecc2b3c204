#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "utils/NameTable.h"
#include "utils/ParameterBlockCodec.h"
#include "utils/ParameterTree.h"

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

// The image of a whole tree. One walk measures it and counts the names; a second pass along the
// list that the walk made gives out the tokens and writes.
class CSessionImage {
public:
    CSessionImage(const char* id, CParameterBlock& top) : m_pId(id) {
        m_entries.reserve(top.parameters.size() + 1);
        Note(top);
        VisitTree(top, [this](CParameter& parameter) { Note(parameter); });
    }

    bool CanBeSaved() const {
        auto const& names = m_table.Names();
        if (names.empty()) return false;
        return std::none_of(names.begin(), names.end(), [](CNameTable::CName const& name) {
            return name.text.find('\0') != std::string_view::npos;
        });
    }

    // Gives the tokens and returns the image's length.
    std::size_t Measure() {
        std::vector<CNameTable::CName>& names = m_table.Names();
        OrderByCount();
        std::size_t tokenBytes = m_nEmptyNames * codec::TokenSize(0);
        for (std::uint32_t position = 0; position < m_order.size(); ++position) {
            CNameTable::CName& name = names[m_order[position]];
            name.nToken = position + 1;
            tokenBytes += name.nCount * codec::TokenSize(name.nToken);
            m_nSizeOfNames += name.text.size() + 1;
        }
        return OrEmpty(m_pId).size() + 1 + numbersInHeader + m_nSizeOfNames + tokenBytes +
               m_nValueBytes;
    }

    void Save(unsigned char* out) const {
        std::vector<CNameTable::CName> const& names = m_table.Names();
        out = StoreHeaderStart(m_pId, m_nSizeOfNames, names.size(), out);
        for (std::uint32_t index : m_order) out = StoreTerminated(names[index].text, out);
        for (CEntry const& entry : m_entries) {
            CParameter& parameter = *entry.pParameter;
            parameter.token = entry.nName == emptyName ? 0 : names[entry.nName].nToken;
            if (&entry != &m_entries.front()) {
                StoreLittleEndian(parameter.type, out);
                out += codec::tagSize;
            }
            if (CParameterBlock* block = AsBlock(&parameter)) {
                out = codec::StoreToken(parameter.token, out);
                StoreLittleEndian(codec::CountOf(*block), out);
                out += codec::countSize;
            } else if (!codec::VisitValue(parameter, [&](auto const& value) {
                           out = codec::StoreValue(value, codec::StoreToken(value.token, out));
                       })) {
                out += parameter.Save(0, out);
            }
        }
    }

private:
    static constexpr std::uint32_t emptyName = 0xFFFFFFFF;
    static constexpr std::uint32_t unknownName = 0xFFFFFFFF;

    struct CEntry {
        CParameter* pParameter;
        std::uint32_t nName;
    };

    void Note(CParameter& parameter) {
        if (!m_entries.empty()) m_nValueBytes += codec::tagSize;
        m_nValueBytes += ValueSize(parameter);
        const bool named = !parameter.name.empty();
        if (!named) ++m_nEmptyNames;
        m_entries.push_back({&parameter, named ? NameIndex(parameter) : emptyName});
    }

    // A token from an earlier save or load often still tells the name, and spares the search.
    std::uint32_t NameIndex(CParameter const& parameter) {
        if (parameter.token >= m_byOldToken.size()) return m_table.Add(parameter.name);
        std::uint32_t& index = m_byOldToken[parameter.token];
        if (index == unknownName || !m_table.AddAgain(index, parameter.name))
            index = m_table.Add(parameter.name);
        return index;
    }

    // The most frequent names first, equally frequent ones as they came: counted, not compared, for
    // there may be as many names as parameters.
    void OrderByCount() {
        std::vector<CNameTable::CName> const& names = m_table.Names();
        std::uint32_t highest = 0;
        for (CNameTable::CName const& name : names) highest = std::max(highest, name.nCount);
        std::vector<std::uint32_t> place(highest + std::size_t{1});
        for (CNameTable::CName const& name : names) ++place[highest - name.nCount];
        std::uint32_t before = 0;
        for (std::uint32_t& start : place) before += std::exchange(start, before);
        m_order.resize(names.size());
        for (std::uint32_t i = 0; i < names.size(); ++i)
            m_order[place[highest - names[i].nCount]++] = i;
    }

    static std::size_t ValueSize(CParameter const& parameter) {
        std::size_t size = codec::countSize;
        if (parameter.type == tagBlock) return size;
        if (codec::VisitValue(parameter,
                              [&](auto const& value) { size = codec::ValueSize(value); }))
            return size;
        // It cannot be saved, which is for the writing pass to say: there may be nothing to save.
        if (parameter.type == tagBinaryBlock) return 0;
        return parameter.GetSize() - codec::NameSize(parameter);
    }

    const char* m_pId;
    CNameTable m_table;
    std::vector<std::uint32_t> m_byOldToken =
        std::vector<std::uint32_t>(codec::largestShortToken + 1, unknownName);
    std::vector<CEntry> m_entries;
    std::vector<std::uint32_t> m_order;
    std::size_t m_nEmptyNames = 0;
    std::size_t m_nValueBytes = 0;
    std::size_t m_nSizeOfNames = 0;
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
    CSessionImage image(id, *this);
    if (!image.CanBeSaved()) return 0;
    const std::size_t length = image.Measure();
    if (length > std::numeric_limits<std::uint32_t>::max()) return 0;
    CFDataSetLength(data, static_cast<CFIndex>(length + spareBytes));
    unsigned char* const out = CFDataGetMutableBytePtr(data);
    image.Save(out);
    std::memset(out + length, 0, spareBytes);
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
