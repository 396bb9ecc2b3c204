#include "colours/ComponentCodes.h"

#include <algorithm>
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

constexpr std::ptrdiff_t RowsWith(CComponentCode code) {
    return std::ranges::count(kRegistry, code, &CNamedComponentCode::code);
}

constexpr bool IsAliased(CComponentCode code) {
    return std::ranges::any_of(kAliases, [code](CAlias const& row) { return row.code == code; });
}

static_assert(std::ranges::all_of(kAliases,
                                  [](CAlias const& row) { return row.alias == row.code; }),
              "an alias has the number of the code it stands for");
static_assert(std::ranges::all_of(kRegistry,
                                  [](CNamedComponentCode const& row) {
                                      return RowsWith(row.code) == (IsAliased(row.code) ? 2 : 1);
                                  }),
              "every code but the aliases is unique");

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
