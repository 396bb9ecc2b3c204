#include <algorithm>
#include <string_view>

#include "utils/ParameterArena.h"
#include "utils/ParameterBlockCodec.h"

namespace {

// Token by token a body could repeat a long name without end: what names may unfold to is bounded.
constexpr std::size_t freeNameBytes = 16 * 1024 * 1024;
constexpr std::size_t nameBytesPerImageByte = 16;

// An entry takes six bytes at least, a parameter made from it rarely more than eleven times that.
constexpr std::size_t memoryPerImageByte = 11;

// Room made for the entries that a block claims: in the outermost one as many as its bytes may
// hold, in nested ones a few, for they add up.
constexpr std::size_t smallestUsualEntry = 16;
constexpr std::size_t usualEntries = 8;

// The names of one-byte tokens, which most entries have, ready to be copied quickly.
class CFrequentNames {
public:
    explicit CFrequentNames(std::vector<std::string> const* names) {
        if (names == nullptr) return;
        m_names.resize(std::min<std::size_t>(names->size(), codec::largestShortToken + 1));
        for (std::uint32_t token = 0; token < m_names.size(); ++token) {
            std::string const& name = (*names)[token];
            CFrequentName& frequent = m_names[token];
            frequent.said = {token, name};
            if (name.size() > CLoadedName::shortLength) continue;
            std::copy(name.begin(), name.end(), frequent.text);
            frequent.said = {token, {frequent.text, name.size()}, true};
        }
    }

    /// The name that a token's byte says; null for bytes that say more or nothing.
    CLoadedName const* Find(unsigned char byte) const {
        return byte < m_names.size() ? &m_names[byte].said : nullptr;
    }

private:
    struct CFrequentName {
        CLoadedName said;
        char text[CLoadedName::shortLength + 1] = {};
    };

    std::vector<CFrequentName> m_names;
};

// Reads the image of one block and of all blocks in it. The blocks being read stand on a stack of
// their own instead of the call stack, however deep they nest.
class CBlockLoader {
public:
    CBlockLoader(CParameterBlock& top, std::vector<std::string> const* names, unsigned long size,
                 unsigned char const* data)
        : m_top(top),
          m_pNames(names),
          m_frequent(names),
          m_pNext(data),
          m_nRest(size),
          m_nNameBytesLeft(freeNameBytes + nameBytesPerImageByte * size),
          m_arena(memoryPerImageByte * size) {}
    CBlockLoader(CBlockLoader const&) = delete;
    CBlockLoader& operator=(CBlockLoader const&) = delete;

    // An unfinished block goes with all that was read for it.
    ~CBlockLoader() {
        if (m_open.size() > 1) DropLast(m_top);
    }

    // Whether the whole block was read.
    bool Load() {
        Open(m_top, m_nRest / smallestUsualEntry);
        for (;;) {
            while (m_open.back().nEntriesLeft == 0) {
                if (m_open.size() == 1) return true;
                if (!CloseNested()) return false;
            }
            --m_open.back().nEntriesLeft;
            if (m_nRest < codec::tagSize || !LoadEntry(TakeNumber())) return false;
        }
    }

    unsigned long Rest() const { return m_nRest; }

private:
    struct COpenBlock {
        CParameterBlock* pBlock;
        std::uint32_t nEntriesLeft;
    };

    std::uint32_t TakeNumber() {
        const auto number = LoadLittleEndian<std::uint32_t>(m_pNext);
        Advance(sizeof number);
        return number;
    }

    void Advance(std::size_t bytes) {
        m_pNext += bytes;
        m_nRest -= bytes;
    }

    // Reads the count and makes room for as many entries, within the given bound: counts may lie.
    void Open(CParameterBlock& block, std::size_t mostRoom) {
        m_open.push_back({&block, 0});
        if (m_nRest < codec::countSize) return;
        const auto count = static_cast<std::int32_t>(TakeNumber());
        if (count <= 0) return;
        m_open.back().nEntriesLeft = static_cast<std::uint32_t>(count);
        block.parameters.reserve(std::min<std::size_t>(m_open.back().nEntriesLeft, mostRoom));
    }

    bool LoadEntry(std::uint32_t tag) {
        switch (tag) {
            case tagString:
                return LoadValue<CStringParameter>();
            case tagInt:
                return LoadValue<CIntParameter>();
            case tagDouble:
                return LoadValue<CDoubleParameter>();
            case tagUInt64:
                return LoadValue<CUInt64Parameter>();
            case tagFileId:
                return LoadValue<CFileIdTypeParameter>();
            case tagBlock:
                return OpenNested();
            case tagBool:
                return LoadValue<CBoolParameter>();
            case tagFloat:
                return LoadValue<CFloatParameter>();
            case tagSInt64:
                return LoadValue<CSInt64Parameter>();
            case tagBinaryBlock:
                return false;
            default:
                m_open.back().pBlock->parameters.push_back(nullptr);
                return true;
        }
    }

    // Makes the next entry, of which the name comes first. Null when the name asks for too much.
    template <typename Class>
    Class* Append() {
        if (m_nRest > 0)
            if (CLoadedName const* name = m_frequent.Find(*m_pNext)) return Append<Class>(*name, 1);
        const codec::CNameBytes name = codec::ReadName(m_pNames, noToken, m_nRest, m_pNext);
        return Append<Class>(name.said, name.nConsumed);
    }

    // Room in the list comes first, so that nothing is lost when memory runs out.
    template <typename Class>
    Class* Append(CLoadedName const& name, std::size_t nameBytes) {
        if (!AllowName(name.text)) return nullptr;
        CParameterList& list = m_open.back().pBlock->parameters;
        if (list.size() == list.capacity()) list.reserve(list.size() * 2 + usualEntries);
        Class* const made = m_arena.Make<Class>(name);
        CParameter* const entry = made;
        list.push_back(entry);
        Advance(nameBytes);
        return made;
    }

    static void DropLast(CParameterBlock& block) {
        delete block.parameters.back();
        block.parameters.pop_back();
    }

    template <typename Class>
    bool LoadValue() {
        auto* parameter = Append<Class>();
        if (parameter == nullptr) return false;
        Advance(codec::LoadValue(*parameter, m_nRest, m_pNext));
        return true;
    }

    bool OpenNested() {
        auto* block = Append<CParameterBlock>();
        if (block == nullptr) return false;
        block->progress = m_top.progress;
        block->progressTotal = m_top.progressTotal;
        Open(*block, usualEntries);
        return true;
    }

    bool AllowName(std::string_view name) {
        if (m_pNames == nullptr) return true;
        if (name.size() > m_nNameBytesLeft) return false;
        m_nNameBytesLeft -= name.size();
        return true;
    }

    // Completes the innermost block, unless the observer stops the load.
    bool CloseNested() {
        if (m_top.progress != nullptr && m_top.progressTotal != 0 &&
            m_top.progress->Progress(m_top.progressTotal - m_nRest))
            return false;
        m_open.pop_back();
        return true;
    }

    CParameterBlock& m_top;
    std::vector<std::string> const* m_pNames;
    CFrequentNames m_frequent;
    unsigned char const* m_pNext;
    unsigned long m_nRest;
    std::size_t m_nNameBytesLeft;
    CParameterArena m_arena;
    std::vector<COpenBlock> m_open;
};

}  // namespace

unsigned long CParameterBlock::Load(std::vector<std::string> const* names, unsigned long size,
                                    unsigned char const* data) {
    const std::size_t nameBytes = codec::LoadName(*this, names, size, data);
    const long blockBytes = LoadBlock(names, size - nameBytes, data + nameBytes);
    return blockBytes < 0 ? ~0UL : nameBytes + static_cast<unsigned long>(blockBytes);
}

long CParameterBlock::LoadBlock(std::vector<std::string> const* names, unsigned long size,
                                void const* data) {
    Clear();
    CBlockLoader loader(*this, names, size, static_cast<unsigned char const*>(data));
    return loader.Load() ? static_cast<long>(size - loader.Rest()) : -1;
}
