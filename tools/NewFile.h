#pragma once

#include <string>

/// Whether a file that is there already may go.
enum class Replace { No, Yes };

/// Ends the command with a `CToolFailure` when something is there already that may not be replaced.
/// A person at a terminal is asked first. A pipe or a device is no file that could be lost.
void RequireRoomFor(std::string const& strPath, Replace replace);

/// A file that appears whole in its place, or not at all: it is written beside it and moved there
/// once it is kept. It has the permissions of the file that it replaces, or those that a new file
/// of this process has. What a symbolic link points to is replaced, not the link.
class CNewFile {
public:
    /// Throws `CToolFailure`, here as in all operations.
    explicit CNewFile(std::string const& strPath);
    ~CNewFile();
    CNewFile(CNewFile const&) = delete;
    CNewFile& operator=(CNewFile const&) = delete;

    /// For reading and writing, still owned by this object.
    int Descriptor() const { return m_nFile; }

    void Write(std::string const& bytes);

    /// Puts the file into its place, once the disk has it.
    void Keep();

private:
    [[noreturn]] void Fail() const;

    std::string m_strPath;
    std::string m_strTarget;
    std::string m_strBeside;
    int m_nFile = -1;
};
