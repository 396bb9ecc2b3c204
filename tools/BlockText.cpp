#include "tools/BlockText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ostream>

#include "tools/InputOutput.h"

namespace {

constexpr std::array<const char*, 11> typeWords{"unknown", "string", "int",   "double",
                                                "uint64",  "fileId", "block", "bool",
                                                "float",   "int64",  "binary"};

// Deeper levels are not indented further: the output would grow with the square of the depth.
constexpr std::size_t deepestIndent = 40;

template <typename Number>
std::string Shortest(Number number) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

std::string Indent(std::size_t depth) {
    return std::string(2 * std::min(depth, deepestIndent), ' ');
}

}  // namespace

const char* TypeWord(CParameter const* parameter) {
    if (parameter == nullptr || parameter->type >= typeWords.size()) return typeWords[0];
    return typeWords[parameter->type];
}

std::string ValueText(CParameter const& parameter) {
    switch (parameter.type) {
        case tagString:
            return Quoted(parameter.GetString());
        case tagDouble:
            return Shortest(static_cast<CDoubleParameter const&>(parameter).value);
        case tagFloat:
            return Shortest(static_cast<CFloatParameter const&>(parameter).value);
        case tagBool:
            return static_cast<CBoolParameter const&>(parameter).value ? "true" : "false";
        case tagFileId: {
            auto const& id = static_cast<CFileIdTypeParameter const&>(parameter).value;
            return Shortest(id.first) + " " + Shortest(id.second);
        }
        case tagBlock:
            return "";
        default:
            return parameter.GetString();
    }
}

void WriteTree(std::ostream& out, CBlockDocument const& document) {
    if (document.fBare)
        out << "bare block\n";
    else
        out << "session " << Quoted(document.strId) << ", block " << Quoted(document.block.name)
            << '\n';
    WriteEntries(out, document.block);
}

void WriteEntries(std::ostream& out, CParameterBlock const& block) {
    struct CList {
        CParameterBlock const* block;
        std::size_t next;
    };
    std::vector<CList> open{{&block, 0}};
    while (!open.empty()) {
        CList& list = open.back();
        if (list.next == list.block->parameters.size()) {
            open.pop_back();
            continue;
        }
        CParameter const* const parameter = list.block->parameters[list.next++];
        out << Indent(open.size()) << TypeWord(parameter);
        if (parameter != nullptr) out << ' ' << Quoted(parameter->name);
        if (parameter != nullptr && parameter->type == tagBlock)
            open.push_back({static_cast<CParameterBlock const*>(parameter), 0});
        else if (parameter != nullptr)
            out << " = " << ValueText(*parameter);
        out << '\n';
    }
}
