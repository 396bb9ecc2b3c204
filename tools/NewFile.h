#pragma once

#include <optional>
#include <string>

#include "platform/WholeFile.h"

/// Whether a file that is there already may go.
enum class Replace { No, Yes };

/// Ends the command with a `CToolFailure` when something is there already that may not be replaced.
/// A person at a terminal is asked first. A pipe or a device is no file that could be lost.
void RequireRoomFor(std::string const& strPath, Replace replace);

/// A `CWholeFile` whose failures end the command: it throws `CToolFailure`.
class CNewFile {
public:
    explicit CNewFile(std::string const& strPath);

    /// For reading and writing, still owned by this object.
    int Descriptor() const { return m_file->Descriptor(); }

    void Write(std::string const& bytes);

    /// Puts the file into its place, once the disk has it.
    void Keep();

private:
    template <typename Work>
    void Do(Work work);

    std::string m_strPath;
    std::optional<CWholeFile> m_file;
};
