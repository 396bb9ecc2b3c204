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
        : m_pNext(block.parameters.begin()), m_pEnd(block.parameters.end()) {}

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
/// than a call stack reaches: a second walk on the stack of the first asks for no memory.
template <typename Visit, typename Enter>
void VisitTree(CParameterBlock const& root, Visit visit, Enter enter,
               std::vector<CParameterRange>& stack) {
    CParameterRange range(root);
    for (;;) {
        while (CParameter* parameter = range.Next()) {
            visit(*parameter);
            if (CParameterBlock* block = enter(parameter)) {
                stack.push_back(range);
                range = CParameterRange(*block);
            }
        }
        if (stack.empty()) return;
        range = stack.back();
        stack.pop_back();
    }
}

/// The same through all blocks on a stack of its own.
template <typename Visit>
void VisitTree(CParameterBlock const& root, Visit visit) {
    std::vector<CParameterRange> stack;
    VisitTree(root, visit, AsBlock, stack);
}
