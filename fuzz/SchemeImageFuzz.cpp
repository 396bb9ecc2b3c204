#include <cstddef>
#include <cstdint>
#include <vector>

#include "colours/DeviceRGB.h"
#include "colours/SchemeFile.h"
#include "platform/Assertion.h"

// A scheme file of any bytes, laid over an empty scheme; what was read can be saved and read again.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static const std::vector<const char*> identifiers{szSchemeIdentifier};
    CParameterBlock session;
    session.LoadBinarySessionFromMemory(&identifiers, data, static_cast<unsigned int>(size));
    CComponentsColors scheme;
    scheme.Load(&session, CDeviceRGB());
    CParameterBlock saved;
    scheme.Save(&saved);
    CComponentsColors again;
    TAVARIN_REQUIRE(again.Load(&saved, CDeviceRGB()));
    TAVARIN_REQUIRE(again.Entries().size() == scheme.Entries().size());
    return 0;
}
