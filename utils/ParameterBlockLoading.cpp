#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "utils/ParameterPool.h"

namespace {

constexpr std::size_t numbersInHeader = 12;

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

// The names of a session where its image has them, by their tokens. A table of strings would take
// sixteen times the bytes of a short name.
class CNamesInImage {
public:
    // Whether the image begins with a header that a body may follow.
    bool ReadHeader(std::vector<const char*> const* ids, std::size_t size,
                    unsigned char const* data) {
        const long idLength = ids != nullptr ? AcceptedIdLength(*ids, size, data) : -1;
        if (idLength < 0) return false;
        const std::size_t start = static_cast<std::size_t>(idLength) + 1 + numbersInHeader;
        const auto sizeOfNames = LoadLittleEndian<std::uint32_t>(data + start - 8);
        const auto count = LoadLittleEndian<std::uint32_t>(data + start - 4);
        if (size - start <= sizeOfNames || count > sizeOfNames) return false;
        m_bytes = {reinterpret_cast<const char*>(data) + start, sizeOfNames};
        m_starts.reserve(count + std::size_t{1});
        while (m_starts.size() <= count) {
            if (m_starts.back() >= sizeOfNames) return false;
            // The last terminator counts even where the table ends before it.
            const std::size_t end = std::min(m_bytes.find('\0', m_starts.back()), m_bytes.size());
            m_starts.push_back(static_cast<std::uint32_t>(end + 1));
        }
        m_nHeader = start + m_starts.back();
        return true;
    }

    std::size_t SizeOfHeader() const { return m_nHeader; }

    std::size_t size() const { return m_starts.size(); }

    std::string_view operator[](std::size_t token) const {
        if (token == 0) return {};
        const std::size_t start = m_starts[token - 1];
        return {m_bytes.data() + start, m_starts[token] - start - 1};
    }

private:
    std::string_view m_bytes;
    std::vector<std::uint32_t> m_starts{0};  // of every name, and of what follows the last one
    std::size_t m_nHeader = 0;
};

// Reads the image of one block and of all blocks in it, however deep they nest.
//
// What is read for a block that is not whole yet stands on a stack of the reader's own; a tree
// gets what is finished. `Names` is the table that tokens point into, null when names stand inline.
template <typename Names>
class CParameterReader {
public:
    CParameterReader(CParameterBlock& top, Names const* names, std::size_t size,
                     unsigned char const* data)
        : m_top(top), m_pNames(names), m_pNext(data), m_pEnd(data + size) {}

    // Reads the name of the outermost block.
    void ReadOwnName() { m_pNext += codec::LoadName(m_top, m_pNames, Rest(), m_pNext); }

    // Reads the list of the outermost block into it. Whether it was whole.
    bool ReadList() {
        std::int32_t nLeft = TakeCount();
        // A count may lie: no entry takes fewer bytes than its tag.
        m_top.parameters.reserve(
            std::min<std::size_t>(std::max(nLeft, 0), Rest() / codec::tagSize));
        for (;;) {
            while (nLeft > 0) {
                --nLeft;
                if (Rest() < codec::tagSize || !ReadEntry(TakeNumber(), nLeft)) return false;
            }
            if (m_open.empty()) return true;
            if (!FinishBlock(nLeft)) return false;
        }
    }

    // How many bytes were not read.
    std::size_t Rest() const { return static_cast<std::size_t>(m_pEnd - m_pNext); }

private:
    // A block being read: its name, where its entries begin on the stack, and how many entries of
    // the block around it are still to come.
    struct CLevel {
        std::string_view name;
        std::uint32_t nToken;
        std::int32_t nLeftAround;
        std::size_t nFirst;
    };

    std::uint32_t TakeNumber() {
        const auto number = LoadLittleEndian<std::uint32_t>(m_pNext);
        m_pNext += sizeof number;
        return number;
    }

    std::int32_t TakeCount() {
        return Rest() < codec::countSize ? 0 : static_cast<std::int32_t>(TakeNumber());
    }

    bool ReadEntry(std::uint32_t tag, std::int32_t& nLeft) {
        if (tag == tagBinaryBlock) return false;
        if (tag - tagString > tagBinaryBlock - tagString) {
            Keep(nullptr);
            return true;
        }
        const codec::CNameBytes name = codec::ReadName(m_pNames, noToken, Rest(), m_pNext);
        m_pNext += name.nConsumed;
        if (m_pNames != nullptr) m_nUnfolded += name.text.size();
        if (m_nUnfolded > codec::mostUnfoldedNames) return false;
        if (tag == tagBlock) {
            m_open.push_back({name.text, name.nToken, nLeft, m_unfinished.parameters.size()});
            nLeft = TakeCount();
            return true;
        }
        std::unique_ptr<CParameter> parameter;
        WithValueClass(tag, [&](auto c) {
            auto made = m_pool.Make<typename decltype(c)::type>();
            m_pNext += codec::LoadValue(made->value, Rest(), m_pNext);
            parameter = std::move(made);
            return true;
        });
        SetName(*parameter, name.nToken, name.text);
        Keep(std::move(parameter));
        return true;
    }

    // Names a new parameter. A text that its string has room for is copied quicker with what
    // follows it in the image.
    void SetName(CParameter& parameter, std::uint32_t token, std::string_view name) {
        constexpr std::size_t room = 15;
        parameter.token = token;
        if (name.empty()) return;
        const char* const end = reinterpret_cast<const char*>(m_pEnd);
        if (std::is_same_v<Names, CNamesInImage> && name.size() <= room &&
            end - name.data() >= std::ptrdiff_t{room}) {
            std::destroy_at(&parameter.name);
            std::construct_at(&parameter.name, name.data(), room);
            parameter.name.erase(name.size());
        } else {
            parameter.name = name;
        }
    }

    // Makes the innermost block of what was read for it, unless the observer stops the load.
    bool FinishBlock(std::int32_t& nLeft) {
        const CLevel level = m_open.back();
        auto const first = m_unfinished.parameters.begin() + level.nFirst;
        auto const last = m_unfinished.parameters.end();
        auto block = m_pool.MakeBlock(static_cast<std::size_t>(last - first));
        SetName(*block, level.nToken, level.name);
        block->progress = m_top.progress;
        block->progressTotal = m_top.progressTotal;
        block->parameters.assign(first, last);
        m_unfinished.parameters.erase(first, last);
        nLeft = level.nLeftAround;
        m_open.pop_back();
        if (m_top.progress != nullptr && m_top.progressTotal != 0 &&
            m_top.progress->Progress(m_top.progressTotal - Rest()))
            return false;
        Keep(std::move(block));
        return true;
    }

    void Keep(std::unique_ptr<CParameter> parameter) {
        CParameterBlock& block = m_open.empty() ? m_top : m_unfinished;
        block.parameters.push_back(parameter.get());
        static_cast<void>(parameter.release());
    }

    CParameterBlock& m_top;
    Names const* m_pNames;
    unsigned char const* m_pNext;
    unsigned char const* m_pEnd;
    std::uint64_t m_nUnfolded = 0;
    CParameterPool m_pool;
    std::vector<CLevel> m_open;
    // What was read for the open blocks: the entries of each behind those of the one around it.
    CParameterBlock m_unfinished;
};

}  // namespace

unsigned long CParameterBlock::Load(std::vector<std::string> const* names, unsigned long size,
                                    unsigned char const* data) try {
    CParameterReader reader(*this, names, size, data);
    reader.ReadOwnName();
    Clear();
    return reader.ReadList() ? size - reader.Rest() : ~0UL;
} catch (std::bad_alloc const&) {
    return ~0UL;
}

long CParameterBlock::LoadBlock(std::vector<std::string> const* names, unsigned long size,
                                void const* data) try {
    Clear();
    CParameterReader reader(*this, names, size, static_cast<unsigned char const*>(data));
    return reader.ReadList() ? static_cast<long>(size - reader.Rest()) : -1;
} catch (std::bad_alloc const&) {
    return -1;
}

unsigned int CParameterBlock::LoadHeader(std::vector<const char*> const* ids, unsigned int size,
                                         std::vector<std::string>* names,
                                         unsigned char const* data) const {
    CNamesInImage found;
    if (!found.ReadHeader(ids, size, data)) return 0xFFFFFFFF;
    names->clear();
    names->reserve(found.size());
    for (std::size_t token = 0; token < found.size(); ++token) names->emplace_back(found[token]);
    return static_cast<unsigned int>(found.SizeOfHeader());
}

int CParameterBlock::LoadBinarySessionFromMemory(std::vector<const char*> const* ids,
                                                 unsigned char const* data, unsigned int size) try {
    if (data == nullptr || size == 0) return sessionDone;
    CNamesInImage names;
    if (!names.ReadHeader(ids, size, data)) return sessionHeaderFailed;
    CParameterReader reader(*this, &names, size - names.SizeOfHeader(),
                            data + names.SizeOfHeader());
    reader.ReadOwnName();
    Clear();
    return reader.ReadList() ? sessionDone : sessionBodyFailed;
} catch (std::bad_alloc const&) {
    return sessionBodyFailed;
}
