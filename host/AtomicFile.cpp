#include "host/AtomicFile.h"

#include <system_error>

#include "platform/WholeFile.h"

void WriteFileAtomically(std::string const& strPath, std::string const& strContents) try {
    CWholeFile file(strPath);
    file.Write(strContents);
    file.Keep();
} catch (std::system_error const& failure) {
    throw std::system_error(failure.code(), "cannot write \"" + strPath + "\"");
}
