#include "bench/BenchTree.h"

#include <unordered_set>
#include <utility>

namespace {

using Kind = CBenchNode::EKind;

CBenchNode Block(std::string name) {
    return {std::move(name), Kind::block, "", 0, 0, {}};
}

CBenchNode Int(std::string name, std::int64_t value) {
    return {std::move(name), Kind::integer, "", value, 0, {}};
}

CBenchNode Real(std::string name, double value, Kind kind = Kind::real) {
    return {std::move(name), kind, "", 0, value, {}};
}

CBenchNode Text(std::string name, std::string value) {
    return {std::move(name), Kind::text, std::move(value), 0, 0, {}};
}

void AddHead(CBenchNode& colour, int type, int module, int id) {
    CBenchNode code = Block("Code");
    code.children = {Int("Mod", module), Int("CompID", id)};
    colour.children.push_back(Int("Type", type));
    colour.children.push_back(std::move(code));
    colour.children.push_back(Int("Cl", id % 5));
}

CBenchNode PlainColour(std::string name, int module, int id, std::string title) {
    CBenchNode colour = Block(std::move(name));
    AddHead(colour, 1, module, id);
    int shade = 0;
    for (const char* channel : {"R", "G", "B"})
        colour.children.push_back(Real(channel, (id * 37 + ++shade * 101) % 256 / 255.0));
    colour.children.push_back(Real("A", 1.0));
    colour.children.push_back(Text("Name", std::move(title)));
    return colour;
}

CBenchNode Gradient(std::string name, int module, int id, std::string title) {
    CBenchNode gradient = Block(std::move(name));
    AddHead(gradient, 2, module, id);
    gradient.children.push_back(Text("Name", std::move(title)));
    for (int i = 0; i < 3; ++i) {
        CBenchNode stop = Block("GradColor");
        stop.children.push_back(Real("Position", i * 0.5, Kind::single));
        stop.children.push_back(PlainColour("Color", 0, 0, ""));
        gradient.children.push_back(std::move(stop));
    }
    return gradient;
}

constexpr int flatValues = 100000;

CBenchNode FlatValue(int i, std::string name) {
    switch (i % 5) {
        case 0:
            return Int(std::move(name), i * 7919 - 1000000);
        case 1:
            return Real(std::move(name), i / 7.0);
        case 2:
            return Text(std::move(name), "text " + std::to_string(i));
        case 3:
            return Real(std::move(name), i / 8.0, Kind::single);
        default:
            return {std::move(name), Kind::flag, "", i % 2, 0, {}};
    }
}

// Whether a name comes again after others.
bool NamesReturn(CBenchNode const& block) {
    std::unordered_set<std::string> seen;
    for (std::size_t i = 0; i < block.children.size(); ++i) {
        std::string const& name = block.children[i].name;
        if (i > 0 && name == block.children[i - 1].name) continue;
        if (!seen.insert(name).second) return true;
    }
    return false;
}

// A list of its own has no name inside; a first neighbour turns the entry into one.
void AddToList(CBenchNode& entry, CBenchNode next) {
    if (entry.kind != Kind::list || entry.children.empty() ||
        entry.children[0].name != entry.name) {
        CBenchNode list{entry.name, Kind::list, "", 0, 0, {}};
        list.children.push_back(std::move(entry));
        entry = std::move(list);
    }
    entry.children.push_back(std::move(next));
}

}  // namespace

CBenchNode SchemeTree() {
    constexpr int colours = 350;
    CBenchNode all = Block("Comps");
    for (int id = 0; id < colours; ++id) {
        const std::string title = "Track display area " + std::to_string(id);
        all.children.push_back(id % 7 == 0 ? Gradient("Comp", id % 4, id, title)
                                           : PlainColour("Comp", id % 4, id, title));
    }
    CBenchNode root = Block("");
    root.children.push_back(std::move(all));
    return root;
}

CBenchNode FlatTree() {
    static constexpr const char* names[] = {"Start",  "Length", "Title",  "Gain",  "Muted",
                                            "Track",  "Offset", "Source", "Pitch", "Locked",
                                            "Colour", "Rate",   "Author", "Fade",  "Hidden",
                                            "Layer",  "Tempo",  "Notes",  "Level", "Solo"};
    CBenchNode root = Block("");
    for (int i = 0; i < flatValues; ++i) root.children.push_back(FlatValue(i, names[i % 20]));
    return root;
}

CBenchNode FlatTreeOfDifferentNames() {
    CBenchNode root = Block("");
    for (int i = 0; i < flatValues; ++i)
        root.children.push_back(FlatValue(i, "value" + std::to_string(i)));
    return root;
}

std::size_t CountNodes(CBenchNode const& root) {
    std::size_t nodes = root.children.size();
    for (CBenchNode const& child : root.children) nodes += CountNodes(child);
    return nodes;
}

CBenchNode WithoutRepeatedNames(CBenchNode const& root) {
    CBenchNode made = root;
    made.children.clear();
    const bool returning = NamesReturn(root);
    if (returning) made.kind = Kind::list;
    for (CBenchNode const& original : root.children) {
        CBenchNode child = WithoutRepeatedNames(original);
        if (returning) {
            CBenchNode single = Block("");
            single.children.push_back(std::move(child));
            made.children.push_back(std::move(single));
        } else if (!made.children.empty() && made.children.back().name == child.name) {
            AddToList(made.children.back(), std::move(child));
        } else {
            made.children.push_back(std::move(child));
        }
    }
    return made;
}
