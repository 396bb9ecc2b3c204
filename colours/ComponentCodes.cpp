#include "colours/ComponentCodes.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "colours/ComponentCodeTable.h"

std::int32_t gnAppStyle = 1;

namespace {

#define TAVARIN_COMPONENT(name, module, id) {#name, name},
constexpr CNamedComponentCode kRegistry[] = {
#include "colours/ComponentCodeList.inc"
};
#undef TAVARIN_COMPONENT

struct CAlias {
    CComponentCode alias;
    CComponentCode code;
};
constexpr CAlias kAliases[] = {
    {ccCheckBoxFace, ccCheckBoxFaceUnChecked},
    {ccCheckBoxBorder, ccCheckBoxBorderUnChecked},
    {ccCheckBoxFaceActive, ccCheckBoxFaceDownUnChecked},
    {ccCheckBoxBorderActive, ccCheckBoxBorderDownUnChecked},
};

static_assert(std::ranges::all_of(kAliases,
                                  [](CAlias const& row) { return row.alias == row.code; }),
              "an alias has the number of the code it stands for");

/// How many rows of the registry have a code that another row before them has too.
constexpr std::size_t CountRepeatedCodes() {
    std::array<long long, std::size(kRegistry)> codes{};
    std::ranges::transform(kRegistry, codes.begin(),
                           [](CNamedComponentCode const& row) { return row.code.Packed(); });
    std::ranges::sort(codes);
    std::size_t nRepeated = 0;
    for (std::size_t row = 1; row < codes.size(); ++row) nRepeated += codes[row] == codes[row - 1];
    return nRepeated;
}
static_assert(CountRepeatedCodes() == std::size(kAliases), "every code but the aliases is unique");

}  // namespace

std::span<const CNamedComponentCode> ComponentCodeTable() {
    return kRegistry;
}

std::string_view ComponentCodeName(CComponentCode code) {
    const auto found = std::find_if(std::rbegin(kRegistry), std::rend(kRegistry),
                                    [code](auto const& row) { return row.code == code; });
    return found == std::rend(kRegistry) ? std::string_view{} : found->szName;
}

CNamedComponentCode const* FindComponentCode(std::string_view name) {
    const auto found = std::ranges::find(kRegistry, name, &CNamedComponentCode::szName);
    return found == std::end(kRegistry) ? nullptr : found;
}
