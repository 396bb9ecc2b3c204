#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "utils/ParameterBlock.h"

/// The block that a parameter is, or null when it is of another type (or no parameter at all).
inline CParameterBlock* AsBlock(CParameter* parameter) {
    if (parameter == nullptr || parameter->type != tagBlock) return nullptr;
    return static_cast<CParameterBlock*>(parameter);
}

/// How many entries ahead a walk along a list asks for their memory.
inline constexpr std::ptrdiff_t prefetchDistance = 10;

/// Asks for the memory of a parameter that a walk comes to soon: a tree may have grown all over the
/// heap. The parameter may be null, and shorter than what is asked for.
inline void PrefetchParameter(CParameter const* parameter) {
    constexpr std::uintptr_t cacheLine = 64;
    const auto address = reinterpret_cast<std::uintptr_t>(parameter);
    __builtin_prefetch(parameter);
    __builtin_prefetch(reinterpret_cast<void const*>(address + cacheLine));
}

/// A walk along a block's list that passes over null entries.
class CParameterRange {
public:
    explicit CParameterRange(CParameterBlock const& block)
        : m_pNext(block.parameters.data()),
          m_pEnd(block.parameters.data() + block.parameters.size()) {}

    /// The next parameter; null at the end.
    CParameter* Next() {
        while (m_pNext != m_pEnd) {
            if (m_pEnd - m_pNext > prefetchDistance) PrefetchParameter(m_pNext[prefetchDistance]);
            if (CParameter* parameter = *m_pNext++) return parameter;
        }
        return nullptr;
    }

private:
    CParameter* const* m_pNext;
    CParameter* const* m_pEnd;
};

/// Calls `visit` for every parameter under `root`, each block before what it holds. Its stack is on
/// the heap: trees may nest deeper than a call stack reaches.
template <typename Visit>
void VisitTree(CParameterBlock const& root, Visit visit) {
    std::vector<CParameterRange> open;
    CParameterRange range(root);
    for (;;) {
        while (CParameter* parameter = range.Next()) {
            visit(*parameter);
            if (CParameterBlock* block = AsBlock(parameter)) {
                open.push_back(range);
                range = CParameterRange(*block);
            }
        }
        if (open.empty()) return;
        range = open.back();
        open.pop_back();
    }
}
