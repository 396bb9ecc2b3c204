#include <algorithm>
#include <array>
#include <string_view>

#include "utils/ParameterArena.h"
#include "utils/ParameterBlockCodec.h"

namespace {

// Token by token a body could repeat a long name without end: what names may unfold to is bounded.
constexpr std::size_t freeNameBytes = 16 * 1024 * 1024;
constexpr std::size_t nameBytesPerImageByte = 16;

// An entry takes six bytes at least, a parameter made from it rarely more than eleven times that.
constexpr std::size_t memoryPerImageByte = 11;

// Room made for the entries that a block claims, for counts may lie: all lists together get room
// for as many as the image may hold, and then only as many more as were read.
constexpr std::size_t smallestUsualEntry = 5;
constexpr std::size_t fewEntries = 8;

// The short names of one-byte tokens, which most entries have, ready to be copied quickly.
class CFrequentNames {
public:
    explicit CFrequentNames(std::vector<std::string> const* names) {
        if (names == nullptr) return;
        const std::size_t count =
            std::min<std::size_t>(names->size(), codec::largestShortToken + 1);
        for (std::uint32_t token = 0; token < count; ++token) {
            std::string const& name = (*names)[token];
            if (name.size() > CShortName::longest) continue;
            std::copy(name.begin(), name.end(), m_names[token].text);
            m_names[token].length = static_cast<std::uint32_t>(name.size());
            m_names[token].token = token;
        }
    }

    /// The name that a token's byte says; null when it is not a short one or the byte is no token.
    CShortName const* Find(unsigned char byte) const {
        CShortName const& name = m_names[byte];
        return name.token != noToken ? &name : nullptr;
    }

private:
    // The last one stays unset: that byte begins a longer token.
    std::array<CShortName, codec::largestShortToken + 2> m_names;
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
          m_pEnd(data + size),
          m_nRoomLeft(size / smallestUsualEntry),
          m_nNameBytesLeft(freeNameBytes + nameBytesPerImageByte * size),
          m_arena(memoryPerImageByte * size) {}
    CBlockLoader(CBlockLoader const&) = delete;
    CBlockLoader& operator=(CBlockLoader const&) = delete;

    // An unfinished block goes with all that was read for it.
    ~CBlockLoader() {
        TrimList();
        if (m_open.size() == 1) return;
        m_pLevel = &m_open.front();
        delete *--m_pLevel->pNext;
        TrimList();
    }

    // Whether the whole block was read.
    bool Load() {
        Open(m_top);
        for (;;) {
            while (m_pLevel->pNext != m_pLevel->pEnd)
                if (Rest() < codec::tagSize || !LoadEntry(TakeNumber())) return false;
            if (m_pLevel->nWithoutRoom > 0)
                GrowList(m_pLevel->pBlock->parameters.size() + fewEntries);
            else if (m_open.size() == 1)
                return true;
            else if (!CloseNested())
                return false;
        }
    }

    std::size_t Rest() const { return static_cast<std::size_t>(m_pEnd - m_pNext); }

private:
    // A block being read. Its list has null entries where more are to come, and so many more may
    // come after them.
    struct CLevel {
        CParameterBlock* pBlock = nullptr;
        CParameter** pNext = nullptr;
        CParameter** pEnd = nullptr;
        std::size_t nWithoutRoom = 0;
    };

    std::uint32_t TakeNumber() {
        const auto number = LoadLittleEndian<std::uint32_t>(m_pNext);
        m_pNext += sizeof number;
        return number;
    }

    // Reads the count and makes room for the entries.
    void Open(CParameterBlock& block) {
        m_pLevel = &m_open.emplace_back();
        m_pLevel->pBlock = &block;
        m_pLevel->pNext = m_pLevel->pEnd = block.parameters.data();
        if (Rest() < codec::countSize) return;
        const auto count = static_cast<std::int32_t>(TakeNumber());
        if (count <= 0) return;
        m_pLevel->nWithoutRoom = static_cast<std::size_t>(count);
        const std::size_t room = std::min(m_pLevel->nWithoutRoom, m_nRoomLeft);
        m_nRoomLeft -= room;
        if (room > 0) GrowList(room);
    }

    // Makes room for at most so many of the entries that are still to come.
    void GrowList(std::size_t mostRoom) {
        const std::size_t room = std::min(m_pLevel->nWithoutRoom, mostRoom);
        CParameterList& list = m_pLevel->pBlock->parameters;
        const std::size_t used = list.size();
        list.resize(used + room);
        m_pLevel->nWithoutRoom -= room;
        m_pLevel->pNext = list.data() + used;
        m_pLevel->pEnd = list.data() + list.size();
    }

    void TrimList() {
        CParameterList& list = m_pLevel->pBlock->parameters;
        list.resize(static_cast<std::size_t>(m_pLevel->pNext - list.data()));
    }

    bool LoadEntry(std::uint32_t tag) {
        if (tag < tagString || tag >= tagBinaryBlock) {
            if (tag == tagBinaryBlock) return false;
            ++m_pLevel->pNext;
            return true;
        }
        if (m_pNext != m_pEnd)
            if (CShortName const* name = m_frequent.Find(*m_pNext)) {
                ++m_pNext;
                return LoadNamed(tag, *name);
            }
        return LoadOther(tag);
    }

    // Apart from the rest, which is short this way.
    [[gnu::noinline]] bool LoadOther(std::uint32_t tag) {
        const codec::CNameBytes name = codec::ReadName(m_pNames, noToken, Rest(), m_pNext);
        m_pNext += name.nConsumed;
        return AllowName(name.said.text) && LoadNamed(tag, name.said);
    }

    template <typename Name>
    bool LoadNamed(std::uint32_t tag, Name const& name) {
        switch (tag) {
            case tagString:
                return LoadValue<CStringParameter>(name);
            case tagInt:
                return LoadValue<CIntParameter>(name);
            case tagDouble:
                return LoadValue<CDoubleParameter>(name);
            case tagUInt64:
                return LoadValue<CUInt64Parameter>(name);
            case tagFileId:
                return LoadValue<CFileIdTypeParameter>(name);
            case tagBool:
                return LoadValue<CBoolParameter>(name);
            case tagFloat:
                return LoadValue<CFloatParameter>(name);
            case tagSInt64:
                return LoadValue<CSInt64Parameter>(name);
            default:
                return OpenNested(name);
        }
    }

    template <typename Class, typename Name>
    bool LoadValue(Name const& name) {
        auto* const parameter = m_arena.Make<Class>(name);
        *m_pLevel->pNext++ = parameter;
        m_pNext += codec::LoadValue(*parameter, Rest(), m_pNext);
        return true;
    }

    template <typename Name>
    bool OpenNested(Name const& name) {
        auto* const block = m_arena.Make<CParameterBlock>(name);
        *m_pLevel->pNext++ = block;
        block->progress = m_top.progress;
        block->progressTotal = m_top.progressTotal;
        Open(*block);
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
            m_top.progress->Progress(m_top.progressTotal - Rest()))
            return false;
        m_open.pop_back();
        m_pLevel = &m_open.back();
        return true;
    }

    CParameterBlock& m_top;
    std::vector<std::string> const* m_pNames;
    CFrequentNames m_frequent;
    unsigned char const* m_pNext;
    unsigned char const* m_pEnd;
    std::size_t m_nRoomLeft;
    std::size_t m_nNameBytesLeft;
    CParameterArena m_arena;
    // The blocks being read, and the innermost of them.
    std::vector<CLevel> m_open;
    CLevel* m_pLevel = nullptr;
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
