#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

/// A directory of a test's own, removed with everything in it.
class CTemporaryDirectory {
public:
    CTemporaryDirectory()
        : m_strPath((std::filesystem::temp_directory_path() / "tavarin-test-XXXXXX").string()) {
        if (!mkdtemp(m_strPath.data())) throw std::runtime_error("no temporary directory");
    }

    ~CTemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_strPath, ignored);
    }

    CTemporaryDirectory(CTemporaryDirectory const&) = delete;
    CTemporaryDirectory& operator=(CTemporaryDirectory const&) = delete;

    /// Full path, without a separator at the end.
    std::string const& Path() const { return m_strPath; }

private:
    std::string m_strPath;
};
