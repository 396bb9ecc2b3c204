#include "bench/BenchTree.h"

#include <unordered_map>

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
    constexpr int values = 100000;
    CBenchNode root = Block("");
    for (int i = 0; i < values; ++i) {
        const std::string name = "value" + std::to_string(i);
        switch (i % 5) {
            case 0:
                root.children.push_back(Int(name, i * 7919 - 1000000));
                break;
            case 1:
                root.children.push_back(Real(name, i / 7.0));
                break;
            case 2:
                root.children.push_back(Text(name, "text " + std::to_string(i)));
                break;
            case 3:
                root.children.push_back(Real(name, i / 8.0, Kind::single));
                break;
            default:
                root.children.push_back(Int(name, i % 2));
                root.children.back().kind = Kind::flag;
        }
    }
    return root;
}

std::size_t CountNodes(CBenchNode const& root) {
    std::size_t nodes = root.children.size();
    for (CBenchNode const& child : root.children) nodes += CountNodes(child);
    return nodes;
}

std::vector<CBenchGroup> GroupByName(CBenchNode const& block) {
    std::vector<CBenchGroup> groups;
    std::unordered_map<std::string, std::size_t> known;
    for (CBenchNode const& child : block.children) {
        const auto [found, isNew] = known.emplace(child.name, groups.size());
        if (isNew) groups.push_back({&child.name, {}});
        groups[found->second].members.push_back(&child);
    }
    return groups;
}
