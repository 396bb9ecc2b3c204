#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// What the platforms do differently with files, with one implementation per platform.
///
/// Paths are UTF-8 with "/" separators and are handed to the platform as they are. Nothing throws
/// of its own accord. Every call may be made from any thread; an enumerator is one thread's at a
/// time.
namespace FileSystem {

/// Nothing on success, otherwise the platform's words for what went wrong.
using Failure = std::optional<std::string>;

struct Attributes {
    std::uint64_t nSize = 0;  ///< bytes
    double dModified = 0.0;   ///< seconds since 1 January 1970, UTC
    bool fBusy = false;       ///< always false where the platform has no such flag
};

enum class Item { Missing, File, Directory };

/// Holds back the platform's temporary objects and frees them at the end of the scope. Pools nest
/// like scopes and stay on their thread. Does nothing where the platform has no such pools.
class CAutoreleasePool {
public:
    CAutoreleasePool();
    ~CAutoreleasePool();
    CAutoreleasePool(const CAutoreleasePool&) = delete;
    CAutoreleasePool& operator=(const CAutoreleasePool&) = delete;

private:
    [[maybe_unused]] void* m_pPool = nullptr;
};

/// Names everything below a directory, one item at a time and in no particular order.
///
/// Items are paths relative to the directory, such as "take.wav" or "sub/take.wav". Directories
/// are items too and are entered; symbolic links are items and are not entered, except that the
/// directory itself may be one. A directory that cannot be read counts as empty. Costs no more than
/// reading the directories: nothing is sorted, and one folder is open beside the topmost.
class CDirectoryEnumerator {
public:
    explicit CDirectoryEnumerator(const std::string& path);
    ~CDirectoryEnumerator();
    CDirectoryEnumerator(const CDirectoryEnumerator&) = delete;
    CDirectoryEnumerator& operator=(const CDirectoryEnumerator&) = delete;

    /// Writes the next item to `*item`; false when there is none left.
    bool Next(std::string* item);

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

/// The attributes of the item itself, even when it is a symbolic link; nothing when it is missing.
std::optional<Attributes> GetAttributes(const std::string& path);

/// What the path leads to, symbolic links followed.
Item GetItem(const std::string& path);

/// Sets the item's modification time in seconds since 1970, fractions included.
[[nodiscard]] Failure SetModificationTime(const std::string& path, double seconds);

/// Sets the HFS creator and type codes; does no more than look for the item where there are none.
[[nodiscard]] Failure SetCreatorAndType(const std::string& path, unsigned long creator,
                                        unsigned long type);

/// Moves an item to a new full path, onto another volume too. Never replaces: an item that stands
/// at `to`, or appears there meanwhile, stays and the move fails with nothing changed.
[[nodiscard]] Failure Move(const std::string& from, const std::string& to);

/// Creates a directory and those above it that are missing. An existing one is no failure.
[[nodiscard]] Failure CreateDirectories(const std::string& path);

/// The user's directory for temporary files, or "/tmp".
std::string TemporaryDirectory();

/// The full path of the running program; empty when the platform cannot tell.
std::string ProgramPath();

/// Adds one line to the platform's log (standard error where there is no other).
void Log(const std::string& line);

}  // namespace FileSystem
