#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

struct CHostTable;

/// A value that crosses between a script and a host function. Tables only go from the script to
/// the host; a result is one of the others.
using CHostValue =
    std::variant<std::monostate, bool, std::int64_t, double, std::string, CHostTable>;

/// A table of a script, copied: its list part (keys 1, 2, …) and its named fields.
struct CHostTable {
    std::vector<CHostValue> m_List;
    std::map<std::string, CHostValue> m_Fields;
};
