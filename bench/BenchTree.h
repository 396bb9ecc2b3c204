#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A tree of named values that every contender builds in its own form.
struct CBenchNode {
    enum EKind { block, text, integer, real, single, flag };

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

/// 100,000 values of all kinds in one block, each with a name of its own.
CBenchNode FlatTree();

/// The nodes below the root.
std::size_t CountNodes(CBenchNode const& root);

/// The children that share a name are a list: what a form without repeated names makes of them.
struct CBenchGroup {
    std::string const* name;
    std::vector<CBenchNode const*> members;
};

std::vector<CBenchGroup> GroupByName(CBenchNode const& block);
