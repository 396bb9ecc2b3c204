#pragma once

#include <string>
#include <string_view>

/// A file that appears whole in its place, or not at all: it is written beside it and moved there
/// once it is kept. It has the permissions of the file that it replaces, or those that a new file
/// of this process has. What a symbolic link points to is replaced, not the link.
///
/// Throws `std::system_error` from every operation, with nothing changed.
class CWholeFile {
public:
    explicit CWholeFile(std::string const& strPath);
    ~CWholeFile();
    CWholeFile(CWholeFile const&) = delete;
    CWholeFile& operator=(CWholeFile const&) = delete;

    /// For reading and writing, still owned by this object.
    int Descriptor() const noexcept { return m_nFile; }

    void Write(std::string_view bytes);

    /// Puts the file into its place, once the disk has it.
    void Keep();

private:
    std::string m_strTarget;
    std::string m_strBeside;
    int m_nFile = -1;
};
