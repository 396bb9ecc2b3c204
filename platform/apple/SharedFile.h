#pragma once

#include <boost/interprocess/detail/shared_dir_helpers.hpp>
#include <string>

/// The path of the file that stands for a shared-memory object: macOS does not declare POSIX's
/// shared memory whole, and Boost takes files in a directory of its own instead.
inline std::string SharedFileOf(const char* szName) {
    std::string strFile;
    boost::interprocess::ipcdetail::shared_filepath(szName, strFile);
    return strFile;
}
