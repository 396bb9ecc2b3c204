#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Assertion.h"
#include "utils/ParameterBlock.h"

namespace {

void CheckHeader(std::uint8_t const* data, unsigned int size) {
    static const std::vector<const char*> ids{"XY", ""};
    constexpr unsigned int noHeader = 0xFFFFFFFF;
    std::vector<std::string> names;
    const unsigned int length = CParameterBlock().LoadHeader(&ids, size, &names, data);
    if (length == noHeader) return;
    TAVARIN_REQUIRE(length <= size);
    TAVARIN_REQUIRE(!names.empty() && names.front().empty());
    TAVARIN_REQUIRE(names.size() <= size);
}

template <typename Parameter>
void CheckParameter(std::uint8_t const* data, unsigned int size,
                    std::vector<std::string> const* names) {
    Parameter parameter;
    parameter.name = "before";
    const unsigned int nameBytes = parameter.LoadName(names, size, data);
    TAVARIN_REQUIRE(nameBytes <= size);
    TAVARIN_REQUIRE(names != nullptr || parameter.token == noToken);
    Parameter whole;
    TAVARIN_REQUIRE(whole.Load(names, size, data) <= size);
    std::vector<unsigned char> bytes(whole.GetSize());
    TAVARIN_REQUIRE(whole.Save(bytes.size(), bytes.data()) == bytes.size());
}

}  // namespace

// The names of a session's header, and one parameter's name and value with and without a table.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static const std::vector<std::string> table{"", "A", "Name"};
    const auto length = static_cast<unsigned int>(size);
    CheckHeader(data, length);
    for (std::vector<std::string> const* names :
         {static_cast<std::vector<std::string> const*>(nullptr), &table}) {
        CheckParameter<CStringParameter>(data, length, names);
        CheckParameter<CIntParameter>(data, length, names);
        CheckParameter<CDoubleParameter>(data, length, names);
        CheckParameter<CBoolParameter>(data, length, names);
    }
    return 0;
}
