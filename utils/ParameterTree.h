#pragma once

#include <typeinfo>
#include <vector>

#include "utils/ParameterBlock.h"

/// The block that a parameter is, or null when it is of another type (or no parameter at all).
inline CParameterBlock* AsBlock(CParameter* parameter) {
    if (parameter == nullptr || parameter->type != tagBlock) return nullptr;
    return static_cast<CParameterBlock*>(parameter);
}

/// A walk along a block's list that passes over null entries.
class CParameterRange {
public:
    explicit CParameterRange(CParameterBlock const& block)
        : m_pNext(block.parameters.data()), m_pEnd(m_pNext + block.parameters.size()) {}

    /// The next parameter; null at the end.
    CParameter* Next() {
        while (m_pNext != m_pEnd)
            if (CParameter* parameter = *m_pNext++) return parameter;
        return nullptr;
    }

private:
    CParameter* const* m_pNext;
    CParameter* const* m_pEnd;
};

/// Calls `visit` for every parameter under `root`, each block before what it holds; `enter` says
/// what blocks are gone into. The stack of the walk is on the heap, because trees may nest deeper
/// than a call stack reaches. It is returned: a second walk on it asks for no memory.
template <typename Visit, typename Enter = CParameterBlock* (*)(CParameter*)>
std::vector<CParameterRange> VisitTree(CParameterBlock const& root, Visit visit,
                                       Enter enter = AsBlock,
                                       std::vector<CParameterRange> stack = {}) {
    CParameterRange range(root);
    for (;;) {
        while (CParameter* parameter = range.Next()) {
            visit(*parameter);
            if (CParameterBlock* block = enter(parameter)) {
                stack.push_back(range);
                range = CParameterRange(*block);
            }
        }
        if (stack.empty()) return stack;
        range = stack.back();
        stack.pop_back();
    }
}
