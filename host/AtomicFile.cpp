#include "host/AtomicFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace {

/// A file beside its final place; removed again unless it was renamed.
class CTemporaryFile {
public:
    explicit CTemporaryFile(std::string const& strPath)
        : m_strTarget(strPath), m_strName(strPath + ".XXXXXX"), m_nFile(mkstemp(m_strName.data())) {
        if (m_nFile < 0) Fail();
    }

    ~CTemporaryFile() {
        if (m_nFile < 0) return;
        close(m_nFile);
        unlink(m_strName.c_str());
    }

    CTemporaryFile(CTemporaryFile const&) = delete;
    CTemporaryFile& operator=(CTemporaryFile const&) = delete;

    void Write(std::string_view rest) {
        while (!rest.empty()) {
            ssize_t const nWritten = write(m_nFile, rest.data(), rest.size());
            if (nWritten < 0 && errno == EINTR) continue;
            if (nWritten < 0) Fail();
            rest.remove_prefix(static_cast<std::size_t>(nWritten));
        }
    }

    void Rename() {
        struct stat old {};
        mode_t const nMode = stat(m_strTarget.c_str(), &old) == 0 ? old.st_mode & 0777 : 0644;
        if (fchmod(m_nFile, nMode) != 0 || fsync(m_nFile) != 0 ||
            rename(m_strName.c_str(), m_strTarget.c_str()) != 0)
            Fail();
        close(m_nFile);
        m_nFile = -1;
    }

private:
    [[noreturn]] void Fail() {
        throw std::system_error(errno, std::generic_category(),
                                "cannot write \"" + m_strTarget + "\"");
    }

    std::string m_strTarget;
    std::string m_strName;
    int m_nFile;
};

}  // namespace

void WriteFileAtomically(std::string const& strPath, std::string const& strContents) {
    CTemporaryFile file(strPath);
    file.Write(strContents);
    file.Rename();
}
