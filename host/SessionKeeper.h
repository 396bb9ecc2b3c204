#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>

#include "host/ReferenceHost.h"

/// Keeps a host's session in files while the host runs.
///
/// A file that cannot be written is told once on standard error, tried again every second, and told
/// again when it works. Used by one thread.
class CSessionKeeper {
public:
    using Writer = std::function<void(CSession const& session, std::string const& strPath)>;

    /// Adds a file; `write` throws when it fails.
    void Add(std::string const& strPath, Writer write);

    /// Writes all files. Throws what the first of them throws that fails.
    void Begin(CReferenceHost const& host);

    /// Writes what is out of date. The session is copied only then.
    void KeepUp(CReferenceHost const& host);

    /// Writes what is out of date for the last time, and says on standard error which files do not
    /// hold the session as it ends. True when all do.
    bool End(CReferenceHost const& host);

private:
    using Clock = std::chrono::steady_clock;

    struct File {
        std::string m_strPath;
        Writer m_Write;
        std::optional<std::uint32_t> m_nKept;  ///< the update counter of what it holds
        std::string m_strFailure;              ///< empty while it works
        Clock::time_point m_NextTry;
    };

    static void Write(File& file, CSession const& session);
    static void TryToWrite(File& file, CReferenceHost const& host);

    std::list<File> m_Files;
};
