#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <memory>
#include <string>

/// \file
/// Directories and files by name: CDiskPath, CFileName and the functions that take path texts
/// apart.
///
/// Paths are byte strings in UTF-8 with "/" between the names. Nothing here normalises, resolves
/// or escapes them. Nothing throws of its own accord: what makes a name gives an empty one when it
/// fails, and moves and attributes that fail leave a line in the platform's log. An object belongs
/// to one thread at a time. Arguments that are pointers must not be null unless they say so.

class CFileName;
class CDiskPathIterator;

/// A directory, by its path; it need not exist.
class CDiskPath {
public:
    std::string path;  ///< as given: no separator at the end is added or removed

    /// The walk under way; null when there is none. Copies never take it over.
    std::unique_ptr<CDiskPathIterator> iterator;

    /// An empty path.
    CDiskPath();

    /// A path as its text says it.
    CDiskPath(std::string const* text);

    /// A path as its zero-terminated text says it.
    CDiskPath(const char* text);

    /// A text that cannot be converted, or null, gives an empty path.
    CDiskPath(CFStringRef text);

    /// Copies the path only.
    CDiskPath(CDiskPath const& other);

    /// Copies the path and ends a walk under way in this object.
    CDiskPath& operator=(CDiskPath const& other);

    /// Ends a walk under way.
    ~CDiskPath();

    /// Byte for byte: "a/b" and "a/b/" differ.
    bool operator==(CDiskPath const& other) const;

    /// Whether the path is the empty text.
    bool Empty() const;

    /// Replaces the path; a walk under way goes on where it is.
    void Set(std::string const* text);

    /// The path as it stands.
    std::string GetFullPathString() const;

    /// The caller releases the result; null when the path is not UTF-8.
    CFStringRef GetFullPathCFString() const;

    /// True when anything stands at the path, a plain file too.
    bool Exists() const;

    /// Removes what stands at the path, a directory only when it is empty. 0 on success, -1 on
    /// failure; an empty path is left alone and gives 0.
    int DirDelete() const;

    /// Creates a new directory "TANroXXXXXX" (six random characters) in the user's temporary
    /// directory. Empty on failure.
    static CDiskPath MakeTemporaryDirectory();

    /// Creates a new directory "<this>/<subName>/<year>_<month>_<day>/Audio_XXXXXX" of today's
    /// local date, with all directories above it. Empty on failure.
    CDiskPath CreateUniqueSubDirectory(const char* subName) const;

    /// Starts a walk through this directory and all below it for names with `extension`, given
    /// without its dot and compared exactly. On a find `*out` gets this directory and the name
    /// relative to it ("sub/take.wav"); otherwise the result is false and the walk is over.
    /// The walk also ends with the next FirstFile, an assignment to this object, or its end.
    bool FirstFile(CFileName* out, const char* extension);

    /// Goes on with the walk. Only while one is under way; anything else stops the process.
    bool NextFile(CFileName* out);

    /// Does nothing: a walk ends as FirstFile tells.
    void CloseFileFind();
};

/// A file: a directory and a name; it need not exist.
class CFileName {
public:
    std::string name;  ///< may hold "/" when it comes from a walk
    CDiskPath path;    ///< the directory

    /// No directory and no name.
    CFileName();

    /// A name in a directory; the directory is copied.
    CFileName(CDiskPath const* directory, std::string const* fileName);

    /// The same from a zero-terminated name.
    CFileName(CDiskPath const* directory, const char* fileName);

    /// The same; a name that cannot be converted, or null, is an empty one.
    CFileName(CDiskPath const* directory, CFStringRef fileName);

    /// Splits a full path at its last "/", which belongs to neither part: "/take.wav" becomes
    /// "take.wav" in no directory, and a text that ends in "/" has an empty name.
    CFileName(std::string const* fullPath);

    /// The same from a zero-terminated path.
    CFileName(const char* fullPath);

    /// The same; a path that cannot be converted, or null, is an empty one.
    CFileName(CFStringRef fullPath);

    /// Whether directory and name are the same, byte for byte.
    bool operator==(CFileName const& other) const;

    /// True when directory and name are both empty.
    bool Empty() const;

    /// The caller releases the result; null when the name is not UTF-8.
    CFStringRef GetNameCFString() const;

    /// Directory, "/" unless the directory is empty or ends in one, name.
    std::string GetFullPath() const;

    /// GetFullPath.
    std::string GetFullPathString() const;

    /// The caller releases the result; null when the path is not UTF-8.
    CFStringRef GetFullPathCFString() const;

    /// "file://localhost/" and the full path with "\" as "/" and without ":". Nothing is escaped.
    std::string GetURL() const;

    /// The part of the name after its last ".".
    std::string GetExtension() const;

    /// Replaces each of " * : < > ? \ | in the name by "_".
    void Clean();

    /// Creates an empty file "TavarinPro.XXXXXX" (six random characters) in the user's temporary
    /// directory, for the caller to fill or delete. Empty on failure.
    static CFileName MakeTemporaryFileName();

    /// Removes the file when the full path is not empty. Always 0, whether or not that worked.
    int FileDelete() const;

    /// Moves the file to another full path, never over something that stands there: that fails,
    /// is logged and changes nothing. This object keeps the old name.
    bool RenameFile(const char* newFullPath) const;

    /// Sets the four-character codes of the file's creator and type, where the file system has
    /// them.
    void SetCreatorType(unsigned long creator, unsigned long type) const;

    /// Seconds since 1 January 1970, UTC; 0.0 when the attributes cannot be read.
    double GetModificationDateTime() const;

    /// Sets it, in the same unit, fractions included. A failure is logged.
    void SetModificationDateTime(double seconds) const;

    /// True when anything stands at the full path.
    bool Exists() const;

    /// Bytes; 0 when the attributes cannot be read.
    std::uint64_t GetSize() const;

    /// True while another program has marked the file as in use; always false on Linux.
    bool Busy() const;

    /// Tries to open the file for reading. When that fails, a sentence for the user replaces
    /// `*message`.
    bool CanFileBeOpened(std::string* message) const;
};

/// Joins with exactly the dot that is needed: `name` may end in one and `extension` begin with
/// one. An empty name gets no dot.
std::string AddExtension(const char* name, const char* extension);

/// Everything after the last "." of the whole text, also when a "/" follows it; empty without a
/// ".".
std::string GetExtension(std::string const* path);

/// The file's name without directory and extension. A "." at the very start of the text, or in the
/// directory only, starts no extension.
std::string GetExtractName(std::string const* path);

/// The part before the last "/"; empty when that is the first character or there is none.
std::string ExtractPath(std::string const* path);

/// The text in UTF-8 for the caller to free with delete[]; null when it cannot be converted.
char* CFStringToCString(CFStringRef text);

/// The same path in the platform's form, which is the neutral form here.
std::string PathNeutralToPlatform(std::string const& path);

/// The same path in the neutral form, which is the platform's form here.
std::string PathPlatformToNeutral(std::string const& path);
