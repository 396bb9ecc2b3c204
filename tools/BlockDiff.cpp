#include "tools/BlockDiff.h"

#include <algorithm>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include "tools/BlockText.h"
#include "tools/InputOutput.h"
#include "utils/ParameterTree.h"

namespace {

// What identifies an entry among its siblings: name, type, and which of those with both it is.
using Key = std::pair<std::pair<std::string, std::uint32_t>, std::size_t>;
using Entries = std::vector<std::pair<Key, CParameter*>>;

Entries EntriesOf(CParameterBlock const& block) {
    std::map<Key::first_type, std::size_t> seen;
    Entries entries;
    CParameterRange range(block);
    while (CParameter* parameter = range.Next()) {
        const Key::first_type kind{parameter->name, parameter->type};
        entries.emplace_back(Key{kind, seen[kind]++}, parameter);
    }
    return entries;
}

// Entries of no known type have neither name nor value: there is nothing but their number.
std::size_t CountUnknown(CParameterBlock const& block) {
    return static_cast<std::size_t>(
        std::count(block.parameters.begin(), block.parameters.end(), nullptr));
}

// How to get to a block. Blocks nest too deep to keep a text for each.
struct CPath {
    CPath const* parent;
    Key key;
};

std::string Step(Key const& key) {
    const std::string number = key.second > 0 ? "[" + std::to_string(key.second) + "]" : "";
    return Quoted(key.first.first) + number;
}

std::string Text(CPath const* path) {
    constexpr std::size_t stepsShown = 40;
    std::string text;
    for (std::size_t steps = 0; path != nullptr; path = path->parent, ++steps) {
        if (steps == stepsShown) return "..." + text;
        text = "/" + Step(path->key) + text;
    }
    return text;
}

class CDiff {
public:
    explicit CDiff(std::ostream& out) : m_out(out) {}

    void Line(char sign, std::string const& text) {
        m_out << sign << ' ' << text << '\n';
        m_fSame = false;
    }

    void Compare(CParameterBlock const& first, CParameterBlock const& second) {
        m_open.push_back({&first, &second, nullptr});
        while (!m_open.empty()) {
            const CPair pair = m_open.back();
            m_open.pop_back();
            CompareLists(pair);
        }
    }

    bool Same() const { return m_fSame; }

private:
    struct CPair {
        CParameterBlock const* first;
        CParameterBlock const* second;
        CPath const* path;
    };

    void CompareLists(CPair const& pair) {
        const Entries first = EntriesOf(*pair.first), second = EntriesOf(*pair.second);
        const std::map<Key, CParameter*> inFirst(first.begin(), first.end());
        const std::map<Key, CParameter*> inSecond(second.begin(), second.end());
        std::vector<Key> common, commonInSecond;
        const auto opened = static_cast<std::ptrdiff_t>(m_open.size());
        for (auto const& [key, parameter] : first) {
            const auto other = inSecond.find(key);
            if (other == inSecond.end()) {
                Line('-', Describe(pair.path, key, *parameter));
                continue;
            }
            common.push_back(key);
            CompareEntries(pair.path, key, *parameter, *other->second);
        }
        for (auto const& [key, parameter] : second) {
            if (inFirst.count(key) == 0)
                Line('+', Describe(pair.path, key, *parameter));
            else
                commonInSecond.push_back(key);
        }
        // The first of the nested blocks is to be compared next.
        std::reverse(m_open.begin() + opened, m_open.end());
        const std::size_t nUnknown = CountUnknown(*pair.first);
        if (nUnknown != CountUnknown(*pair.second))
            Line('~', Text(pair.path) + "/ entries of unknown type " + std::to_string(nUnknown) +
                          " -> " + std::to_string(CountUnknown(*pair.second)));
        if (common != commonInSecond) Line('~', "order of the entries of " + Text(pair.path) + "/");
    }

    void CompareEntries(CPath const* path, Key const& key, CParameter& first, CParameter& second) {
        if (first.type == tagBlock) {
            m_paths.push_back(std::make_unique<CPath>(CPath{path, key}));
            m_open.push_back({AsBlock(&first), AsBlock(&second), m_paths.back().get()});
            return;
        }
        if (SameBytes(first, second)) return;
        Line('~', Describe(path, key, first) + " -> " + ValueText(second));
    }

    static bool SameBytes(CParameter& first, CParameter& second) {
        if (first.type == tagFileId) return first == second;
        return Bytes(first) == Bytes(second);
    }

    static std::vector<unsigned char> Bytes(CParameter& parameter) {
        parameter.token = 0;
        std::vector<unsigned char> bytes(parameter.GetSize());
        parameter.Save(bytes.size(), bytes.data());
        return bytes;
    }

    static std::string Describe(CPath const* path, Key const& key, CParameter const& parameter) {
        const std::string value = ValueText(parameter);
        return Text(path) + "/" + Step(key) + " " + TypeWord(&parameter) +
               (value.empty() ? "" : " " + value);
    }

    std::ostream& m_out;
    std::vector<CPair> m_open;
    std::vector<std::unique_ptr<CPath>> m_paths;
    bool m_fSame = true;
};

}  // namespace

bool WriteDiff(std::ostream& out, CBlockDocument const& first, CBlockDocument const& second) {
    CDiff diff(out);
    if (first.strId != second.strId)
        diff.Line('~', "identifier " + Quoted(first.strId) + " -> " + Quoted(second.strId));
    if (first.block.name != second.block.name)
        diff.Line('~', "name " + Quoted(first.block.name) + " -> " + Quoted(second.block.name));
    diff.Compare(first.block, second.block);
    return diff.Same();
}
