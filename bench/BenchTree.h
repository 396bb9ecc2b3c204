#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// A tree of named values that every contender builds in its own form.
struct CBenchNode {
    enum EKind { block, list, text, integer, real, single, flag };

    std::string name;
    EKind kind = block;
    std::string textValue;
    std::int64_t integerValue = 0;
    double realValue = 0;
    std::vector<CBenchNode> children;
};

/// Like a saved colour scheme: 350 colours of nested blocks, every seventh a gradient of three
/// stops.
CBenchNode SchemeTree();

/// 100,000 values of all kinds in one block, which share twenty names.
CBenchNode FlatTree();

/// The same values, each with a name of its own.
CBenchNode FlatTreeOfDifferentNames();

/// The values and blocks below the root.
std::size_t CountNodes(CBenchNode const& root);

/// The same tree for forms in which a name may stand once in a block: neighbours of one name become
/// a list under it; where names return in turn, the block becomes a list of blocks of one entry.
CBenchNode WithoutRepeatedNames(CBenchNode const& root);

/// A tree in both forms.
struct CBenchTree {
    explicit CBenchTree(CBenchNode root)
        : repeating(std::move(root)), listed(WithoutRepeatedNames(repeating)) {}

    CBenchNode repeating;
    CBenchNode listed;
};
