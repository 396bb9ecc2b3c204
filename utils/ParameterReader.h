#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "utils/ParameterPool.h"

/// Reads the image of one block and of all blocks in it, however deep they nest.
///
/// What is read for a block that is not whole yet stands on a stack of the reader's own; a tree
/// gets what is finished. `Names` is the table that tokens point into.
template <typename Names>
class CParameterReader {
public:
    /// `names` is null when names stand inline.
    CParameterReader(CParameterBlock& top, Names const* names, std::size_t size,
                     unsigned char const* data)
        : m_top(top), m_pNames(names), m_pNext(data), m_pEnd(data + size) {}
    CParameterReader(CParameterReader const&) = delete;
    CParameterReader& operator=(CParameterReader const&) = delete;

    /// What belongs to no whole block goes.
    ~CParameterReader() {
        CParameterDeleter deleter;
        for (CParameter* parameter : m_finished) deleter.Delete(parameter);
    }

    /// Reads the name of the outermost block.
    void ReadOwnName() {
        const codec::CNameBytes name = TakeName(m_top.token);
        m_top.token = name.nToken;
        if (name.fGiven) m_top.name = name.text;
    }

    /// Reads the list of the outermost block into it. Whether it was whole.
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

    /// How many bytes were not read.
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

    codec::CNameBytes TakeName(std::uint32_t tokenBefore) {
        const codec::CNameBytes name = codec::ReadName(m_pNames, tokenBefore, Rest(), m_pNext);
        m_pNext += name.nConsumed;
        return name;
    }

    bool ReadEntry(std::uint32_t tag, std::int32_t& nLeft) {
        if (tag - tagString >= tagBinaryBlock - tagString) {
            if (tag == tagBinaryBlock) return false;
            Keep(nullptr);
            return true;
        }
        const codec::CNameBytes name = TakeName(noToken);
        if (m_pNames != nullptr) m_nUnfolded += name.text.size();
        if (m_nUnfolded > codec::mostUnfoldedNames) return false;
        if (tag == tagBlock) {
            m_open.push_back({name.text, name.nToken, nLeft, m_finished.size()});
            nLeft = TakeCount();
            return true;
        }
        std::unique_ptr<CParameter> parameter = TakeValue(tag);
        SetName(*parameter, name.nToken, name.text);
        Keep(std::move(parameter));
        return true;
    }

    std::unique_ptr<CParameter> TakeValue(std::uint32_t tag) {
        std::unique_ptr<CParameter> taken;
        WithValueClass(tag, [&](auto c) {
            auto parameter = m_pool.Make<typename decltype(c)::type>();
            m_pNext += codec::LoadValue(parameter->value, Rest(), m_pNext);
            taken = std::move(parameter);
            return true;
        });
        return taken;
    }

    // Names a new parameter. A text that its string has room for is copied quicker with what
    // follows it in the image.
    void SetName(CParameter& parameter, std::uint32_t token, std::string_view name) {
        parameter.token = token;
        if (name.empty()) return;
        if constexpr (requires { Names::fStandBeforeBody; }) {
            constexpr std::size_t room = 15;
            const char* const end = reinterpret_cast<const char*>(m_pEnd);
            if (name.size() <= room && end - name.data() >= std::ptrdiff_t{room}) {
                std::destroy_at(&parameter.name);
                std::construct_at(&parameter.name, name.data(), room);
                parameter.name.erase(name.size());
                return;
            }
        }
        parameter.name = name;
    }

    // Makes the innermost block of what was read for it, unless the observer stops the load.
    bool FinishBlock(std::int32_t& nLeft) {
        const CLevel level = m_open.back();
        CParameter** const first = m_finished.data() + level.nFirst;
        CParameter** const last = m_finished.data() + m_finished.size();
        auto block = m_pool.MakeBlock(static_cast<std::size_t>(last - first));
        SetName(*block, level.nToken, level.name);
        block->progress = m_top.progress;
        block->progressTotal = m_top.progressTotal;
        block->parameters.assign(first, last);
        m_finished.resize(level.nFirst);
        nLeft = level.nLeftAround;
        m_open.pop_back();
        if (m_top.progress != nullptr && m_top.progressTotal != 0 &&
            m_top.progress->Progress(m_top.progressTotal - Rest()))
            return false;
        Keep(std::move(block));
        return true;
    }

    void Keep(std::unique_ptr<CParameter> parameter) {
        if (m_open.empty())
            m_top.parameters.push_back(parameter.get());
        else
            m_finished.push_back(parameter.get());
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
    std::vector<CParameter*> m_finished;
};
