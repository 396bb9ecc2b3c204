#include "utils/ParameterArena.h"
#include "utils/ParameterBlockCodec.h"

namespace {

// Token by token a body could repeat a long name without end: what names may unfold to is bounded.
constexpr std::size_t freeNameBytes = 16 * 1024 * 1024;
constexpr std::size_t nameBytesPerImageByte = 16;

// An entry takes six bytes at least, a parameter made from it rarely more than eleven times that.
constexpr std::size_t memoryPerImageByte = 11;

// Reads the image of one block and of all blocks in it. The blocks being read stand on a stack of
// their own instead of the call stack, however deep they nest. What they hold gathers in one list
// until each block is complete and knows how much room it needs.
class CBlockLoader {
public:
    CBlockLoader(CParameterBlock& top, std::vector<std::string> const* names, unsigned long size,
                 unsigned char const* data)
        : m_top(top),
          m_pNames(names),
          m_pNext(data),
          m_nRest(size),
          m_nNameBytesLeft(freeNameBytes + nameBytesPerImageByte * size),
          m_arena(memoryPerImageByte * size) {}
    CBlockLoader(CBlockLoader const&) = delete;
    CBlockLoader& operator=(CBlockLoader const&) = delete;

    ~CBlockLoader() { HandOver(); }

    // Whether the whole block was read.
    bool Load() {
        Open(&m_top);
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
        std::size_t nFirstEntry;
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

    void Open(CParameterBlock* block) {
        m_open.push_back({block, m_entries.size(), 0});
        if (m_nRest < codec::countSize) return;
        const auto count = static_cast<std::int32_t>(TakeNumber());
        if (count > 0) m_open.back().nEntriesLeft = static_cast<std::uint32_t>(count);
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
                m_entries.push_back(nullptr);
                return true;
        }
    }

    // The place in the list comes first, so that nothing is lost when memory runs out.
    template <typename Class>
    Class* Append() {
        m_entries.push_back(nullptr);
        auto* made = m_arena.Make<Class>();
        m_entries.back() = made;
        return made;
    }

    void DropLast() {
        delete m_entries.back();
        m_entries.pop_back();
    }

    template <typename Class>
    bool LoadValue() {
        auto* parameter = Append<Class>();
        Advance(codec::Load(*parameter, m_pNames, codec::Bounded(m_nRest), m_pNext));
        if (AllowName(parameter->name)) return true;
        DropLast();
        return false;
    }

    // The block stands in front of what it will hold, and owns nothing until it is complete.
    bool OpenNested() {
        auto* block = Append<CParameterBlock>();
        block->progress = m_top.progress;
        block->progressTotal = m_top.progressTotal;
        Advance(codec::LoadName(*block, m_pNames, codec::Bounded(m_nRest), m_pNext));
        if (AllowName(block->name)) {
            Open(block);
            return true;
        }
        DropLast();
        return false;
    }

    bool AllowName(std::string const& name) {
        if (m_pNames == nullptr) return true;
        if (name.size() > m_nNameBytesLeft) return false;
        m_nNameBytesLeft -= name.size();
        return true;
    }

    // Completes the innermost block, which becomes an entry of the one around it.
    bool CloseNested() {
        const COpenBlock closing = m_open.back();
        const auto first = m_entries.begin() + static_cast<std::ptrdiff_t>(closing.nFirstEntry);
        closing.pBlock->parameters.assign(first, m_entries.end());
        m_entries.erase(first, m_entries.end());
        m_open.pop_back();
        if (m_top.progress == nullptr || m_top.progressTotal == 0 ||
            !m_top.progress->Progress(m_top.progressTotal - m_nRest))
            return true;
        DropLast();
        return false;
    }

    // Gives the outermost block what it has got; an unfinished block goes with all that was read
    // for it.
    void HandOver() {
        if (m_open.size() > 1)
            while (m_entries.size() >= m_open[1].nFirstEntry) DropLast();
        m_top.parameters = std::move(m_entries);
    }

    CParameterBlock& m_top;
    std::vector<std::string> const* m_pNames;
    unsigned char const* m_pNext;
    unsigned long m_nRest;
    std::size_t m_nNameBytesLeft;
    CParameterArena m_arena;
    std::vector<COpenBlock> m_open;
    std::vector<CParameter*> m_entries;
};

}  // namespace

unsigned long CParameterBlock::Load(std::vector<std::string> const* names, unsigned long size,
                                    unsigned char const* data) {
    const unsigned int nameBytes = LoadName(names, codec::Bounded(size), data);
    const long blockBytes = LoadBlock(names, size - nameBytes, data + nameBytes);
    return blockBytes < 0 ? ~0UL : nameBytes + static_cast<unsigned long>(blockBytes);
}

long CParameterBlock::LoadBlock(std::vector<std::string> const* names, unsigned long size,
                                void const* data) {
    Clear();
    CBlockLoader loader(*this, names, size, static_cast<unsigned char const*>(data));
    if (!loader.Load()) return -1;
    return static_cast<long>(size - loader.Rest());
}
