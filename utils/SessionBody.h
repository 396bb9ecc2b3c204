#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "utils/ByteBuffer.h"
#include "utils/NameTable.h"
#include "utils/ParameterBlock.h"

/// The body of a session image and the names that its tokens stand for.
///
/// A tree that was saved or loaded before has most likely kept its tokens, names and counts in
/// order: one pass writes with those tokens and checks them on the way. When they turn out wrong,
/// or on a tree that was never saved, one pass counts the names and a second one gives the tokens
/// and writes.
class CSessionBody {
public:
    /// Writes the body. False, with the tree as it was, when it has no name, or one that no image
    /// can hold because of a zero byte in it.
    bool Write(CParameterBlock& top);

    /// The names in the order of their tokens, the first of which is 1. They stay in the tree.
    std::vector<std::string_view> const& Names() const { return m_names; }

    std::span<unsigned char const> Bytes() const { return m_bytes.Bytes(); }

private:
    bool WriteWithOldTokens(CParameterBlock& top);
    bool WriteWithNewTokens(CParameterBlock& top);

    CByteBuffer m_bytes;
    std::vector<std::string_view> m_names;
};
