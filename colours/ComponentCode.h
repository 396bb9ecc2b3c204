#pragma once

#include <cstdint>

class CParameterBlock;

/// Identifies a component, which is anything that the system draws in a colour of its own: a group
/// of components (the module) and a number in it.
///
/// The packed form has the module in the upper 32 bits and the id's bit pattern in the lower ones.
/// A negative id leaves the module's half alone: (0, -1) is 4294967295.
class CComponentCode {
public:
    std::int32_t m_nModule = 0;  ///< 0 general, 1 pitch editing, 2 volume editing, 3 track groups.
    std::int32_t m_nCompID = 0;  ///< The number in the module.

    /// (0, 0), the code of no component.
    constexpr CComponentCode() = default;

    /// A module and a number in it.
    constexpr CComponentCode(int module, int id) : m_nModule(module), m_nCompID(id) {}

    /// The code of a packed form; every 64-bit number is one.
    constexpr CComponentCode(long long packed)
        : m_nModule(static_cast<std::int32_t>(packed >> 32)),
          m_nCompID(static_cast<std::int32_t>(packed & 0xFFFFFFFF)) {}

    /// The packed form.
    constexpr long long Packed() const {
        const auto module = static_cast<std::uint64_t>(static_cast<std::uint32_t>(m_nModule));
        return static_cast<long long>(module << 32 | static_cast<std::uint32_t>(m_nCompID));
    }

    /// Adds a block "Code" with "Mod" and "CompID" to `block`.
    void Save(CParameterBlock* block) const;

    /// Reads the block "Code" of `block`. Without that block it answers false and changes nothing;
    /// a number missing in it becomes 0 and makes the answer false.
    bool Load(CParameterBlock* block);

    /// Whether module and number are the same.
    friend constexpr bool operator==(CComponentCode, CComponentCode) = default;
};
