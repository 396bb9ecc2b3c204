#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "colours/ComponentColour.h"

/// A scheme over another one, as `tavarin-scheme` names them, which is read again when a file of
/// either changes.
class CSchemeWatch {
public:
    /// Reads nothing yet.
    CSchemeWatch(std::string strScheme, std::string strBase);

    std::string const& Name() const { return m_strScheme; }

    /// Whether the scheme has to be read, for the first time or again.
    bool IsDue();

    /// Reads the scheme into `scheme`, which is empty. Throws `CToolFailure`, which says why, when
    /// it cannot be read as it is now.
    void Read(CComponentsColors& scheme) const;

private:
    /// What tells one state of a file from another.
    struct CFileState {
        std::filesystem::file_time_type time;
        std::uintmax_t nSize = 0;
        bool operator==(CFileState const&) const = default;
    };

    std::vector<CFileState> LookAtFiles() const;

    std::string m_strScheme;
    std::string m_strBase;
    std::optional<std::vector<CFileState>> m_read;
};
