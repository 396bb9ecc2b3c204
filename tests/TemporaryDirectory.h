#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

/// A new directory for one test, removed with all it holds at the end of the scope.
class CTemporaryDirectory {
public:
    explicit CTemporaryDirectory(
        std::filesystem::path const& parent = std::filesystem::temp_directory_path())
        : m_strPath(parent / "tavarin-test-XXXXXX") {
        if (mkdtemp(m_strPath.data()) == nullptr) throw std::runtime_error("no " + m_strPath);
    }

    ~CTemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_strPath, ignored);
    }

    CTemporaryDirectory(CTemporaryDirectory const&) = delete;
    CTemporaryDirectory& operator=(CTemporaryDirectory const&) = delete;

    std::string const& Path() const { return m_strPath; }

    /// The full path of a name in here.
    std::string File(std::string_view name) const { return m_strPath + "/" + std::string(name); }

    /// Writes a file, with the directories above it, and gives its full path.
    std::string Write(std::string_view name, std::string_view contents = "") const {
        const std::string file = File(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream(file, std::ios::binary) << contents;
        return file;
    }

    /// The bytes of a file; empty when there is none.
    std::string Read(std::string_view name) const {
        std::ifstream file(File(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Creates a directory, with those above it, and gives its full path.
    std::string MakeDirectory(std::string_view name) const {
        std::filesystem::create_directories(File(name));
        return File(name);
    }

    bool Has(std::string_view name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(File(name)));
    }

private:
    std::string m_strPath;
};
