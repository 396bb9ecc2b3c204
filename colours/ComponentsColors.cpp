#include <algorithm>
#include <iterator>
#include <utility>

#include "colours/ComponentColour.h"
#include "colours/SchemeBlocks.h"
#include "colours/SchemeTypes.h"
#include "platform/Assertion.h"
#include "utils/ParameterBlock.h"

// Built at compile time, so it is there before any other object's construction may use it.
constinit CComponentsColors gAppColours;

namespace {

using Entry = CComponentsColors::Entry;

/// Descending order of the packed code.
bool Before(Entry const& a, Entry const& b) {
    return a.lCode > b.lCode;
}

/// An entry of a saved scheme that a Load fills next; null for a type that is not known.
std::unique_ptr<CComponentColour> MakeColourOfType(int type) {
    switch (type) {
        case kPlainType:
            return std::make_unique<CComponentColour>(CComponentCode(), 0);
        case kGradientType:
            return std::make_unique<CGradientFill>(CComponentCode(), 0);
        default:
            return nullptr;
    }
}

/// Sorts entries and keeps the last one of each code.
void KeepLastOfEach(std::vector<Entry>& entries) {
    std::ranges::reverse(entries);
    std::ranges::stable_sort(entries, Before);
    const auto surplus =
        std::unique(entries.begin(), entries.end(),
                    [](Entry const& a, Entry const& b) { return a.lCode == b.lCode; });
    entries.erase(surplus, entries.end());
}

}  // namespace

CComponentsColors::~CComponentsColors() = default;

CComponentColour* CComponentsColors::FindPacked(CComponentCode code) const {
    if (m_entries.empty()) return nullptr;
    // A binary search without branches for the processor to guess: every painted control comes
    // here.
    const long long packed = code.Packed();
    Entry const* candidate = m_entries.data();
    for (std::size_t left = m_entries.size(); left > 1; left -= left / 2) {
        Entry const* middle = candidate + left / 2;
        candidate = middle->lCode >= packed ? middle : candidate;
    }
    return candidate->lCode == packed ? candidate->pColour.get() : nullptr;
}

CComponentColour* CComponentsColors::Find(CComponentCode code) const {
    return code == CComponentCode() ? nullptr : FindPacked(code);
}

bool CComponentsColors::IsGradient(CComponentCode code) const {
    return dynamic_cast<CGradientFill*>(Find(code)) != nullptr;
}

CGColorRef CComponentsColors::FindCGColorRef(CComponentCode code) const {
    CComponentColour const* colour = FindPacked(code);
    return colour == nullptr ? nullptr : colour->m_cgColor;
}

NSColor* CComponentsColors::FindNSColor(CComponentCode code) const {
    CComponentColour const* colour = FindPacked(code);
    return colour == nullptr ? nullptr : colour->m_nsColor;
}

double* CComponentsColors::FindRGBA(CComponentCode code) const {
    CComponentColour* colour = FindPacked(code);
    return colour == nullptr ? nullptr : colour->m_rgba;
}

void CComponentsColors::UpdateColour(CComponentCode code, float r, float g, float b, float a) {
    CComponentColour* colour = FindPacked(code);
    if (colour == nullptr) return;
    colour->UpdateColour(r, g, b, a);
    Changed();
}

void CComponentsColors::Changed() const {
    if (m_pChanged != nullptr) m_pChanged();
}

void CComponentsColors::Add(CComponentColour* colour) {
    TAVARIN_REQUIRE(colour != nullptr);
    const long long packed = colour->m_code.Packed();
    const auto place =
        std::ranges::lower_bound(m_entries, packed, std::ranges::greater(), &Entry::lCode);
    if (place == m_entries.end() || place->lCode != packed) {
        m_entries.insert(place, Entry{packed, std::unique_ptr<CComponentColour>(colour)});
    } else if (place->pColour.get() != colour) {
        place->pColour.reset(colour);
    }
    Changed();
}

void CComponentsColors::Clear() {
    m_entries.clear();
    Changed();
}

void CComponentsColors::Save(CParameterBlock* block) const {
    CParameterBlock& components = AppendBlock(*block, CComponentColour::szComponents);
    for (Entry const& entry : m_entries) {
        entry.pColour->Save(&AppendBlock(components, CComponentColour::szComponent));
    }
}

bool CComponentsColors::Load(CParameterBlock* block, CGColorSpace* space) {
    CParameterBlock* components = nullptr;
    if (!block->FindParameter(CComponentColour::szComponents, &components)) return false;

    bool fLoaded = true;
    std::vector<Entry> entries;
    CParameterBlock* component = nullptr;
    CParameterBlock::position where{};
    bool fMore = components->FindFirstParameter(CComponentColour::szComponent, &component, &where);
    while (fMore) {
        int type = kPlainType;
        component->FindParameter(CComponentColour::szType, &type, kPlainType);
        if (auto colour = MakeColourOfType(type)) {
            fLoaded = colour->Load(component, space);
            if (fLoaded) entries.push_back({colour->m_code.Packed(), std::move(colour)});
        }
        fMore = components->FindNextParameter(CComponentColour::szComponent, &component, &where);
    }
    Merge(std::move(entries));
    return fLoaded;
}

// One by one, entries in an unlucky order would each move all that follow.
void CComponentsColors::Merge(std::vector<Entry> entries) {
    std::ranges::move(entries, std::back_inserter(m_entries));
    KeepLastOfEach(m_entries);
    Changed();
}
