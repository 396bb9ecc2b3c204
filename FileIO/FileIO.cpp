#include "FileIO/FileIO.h"

#include <sys/stat.h>

#include <array>
#include <cstring>
#include <iterator>

#include "FileIO/FileName.h"

namespace {

constexpr const char* szSourceFile = "Utils/FileIO/FileIO";
constexpr unsigned long kOperationFailed = 1;
constexpr unsigned long kNotOpen = 0;

struct CodeRow {
    std::int32_t code;
    const char* text;  ///< between the file's name and the number
    std::uint32_t status;
};

constexpr const char* szUnknownError = ": unknown error: ";
constexpr CodeRow kUnknownCode{0, szUnknownError, 3002};

constexpr auto kCodes = std::to_array<CodeRow>({
    {CFileIOException::OpenFailed, ": open failed: ", 3008},
    {CFileIOException::FileClosed, ":fFile closed: ", 3015},
    {CFileIOException::SetPositionFailed, ": set position: ", 3010},
    {CFileIOException::GetPositionFailed, ": get position: ", 3010},
    {CFileIOException::ReadFailed, ": file read: ", 3005},
    {CFileIOException::WriteFailed, ": file write: ", 3006},
    {CFileIOException::CloseFailed, ": file close: ", 3009},
    {CFileIOException::LengthFailed, ": file length: ", 3010},
    {CFileIOException::DeleteFailed, ": cannot delete: ", 3009},
    {CFileIOException::Code10, szUnknownError, 4009},
});

constexpr CodeRow const& RowOf(std::int32_t code) {
    for (CodeRow const& row : kCodes) {
        if (row.code == code) return row;
    }
    return kUnknownCode;
}

bool IsDirectory(std::FILE* stream) {
    struct stat status;
    return fstat(fileno(stream), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Null when the file cannot be opened, and for a directory, which some C libraries would open.
std::FILE* OpenFile(std::string const& fileName, const char* mode) {
    std::FILE* stream = std::fopen(fileName.c_str(), mode);
    if (stream == nullptr || !IsDirectory(stream)) return stream;
    std::fclose(stream);
    return nullptr;
}

}  // namespace

CFileIOException::CFileIOException(std::string const& file, FileExceptionCode failure,
                                   unsigned long number, const char* source, int line)
    : code(failure), value(number) {
    sourceFile = source;
    sourceLine = line;
    SetDescription(file, failure, number);
}

CFileIOException& CFileIOException::operator=(CFileIOException const& other) {
    CCodeException::operator=(other);
    code = other.code;
    value = other.value;
    return *this;
}

void CFileIOException::SetDescription(std::string const& file, FileExceptionCode failure,
                                      unsigned long number) {
    fileName = file;
    // Up to the name's first NUL, as a C text has it.
    description = fileName.c_str() + std::string(RowOf(failure).text) +
                  std::to_string(static_cast<std::int32_t>(number));
}

std::uint32_t CFileIOException::GetStatus() const {
    return RowOf(code).status;
}

CFileIO::~CFileIO() {
    CFileIO::Close();
}

void CFileIO::Open(CFileName const* file, bool write, bool create) {
    Close();
    fileName = file->GetFullPath();
    const char* writeMode = create ? "w+" : "r+";
    stream = OpenFile(fileName, write ? writeMode : "r");
    if (stream != nullptr) return;
    throw CFileIOException(fileName, CFileIOException::OpenFailed, kOperationFailed, szSourceFile,
                           __LINE__);
}

void CFileIO::Close() {
    if (stream != nullptr) std::fclose(stream);
    stream = nullptr;
    fileName.clear();
}

bool CFileIO::IsOpen() const {
    return stream != nullptr;
}

long CFileIO::SetPosition(unsigned long offset) {
    RequireOpen(__LINE__);
    if (std::fseek(stream, static_cast<long>(offset), SEEK_SET) == 0) return 0;
    throw CFileIOException(fileName, CFileIOException::SetPositionFailed, kOperationFailed,
                           szSourceFile, __LINE__);
}

unsigned long CFileIO::GetPosition() {
    RequireOpen(__LINE__);
    const long position = std::ftell(stream);
    if (position != -1) return static_cast<unsigned long>(position);
    throw CFileIOException(fileName, CFileIOException::GetPositionFailed, kOperationFailed,
                           szSourceFile, __LINE__);
}

unsigned long CFileIO::GetLength() {
    RequireOpen(__LINE__);
    const long position = std::ftell(stream);
    std::fseek(stream, 0, SEEK_END);
    const long length = std::ftell(stream);
    std::fseek(stream, position, SEEK_SET);
    if (length != -1) return static_cast<unsigned long>(length);
    throw CFileIOException(fileName, CFileIOException::LengthFailed, kOperationFailed, szSourceFile,
                           __LINE__);
}

unsigned long CFileIO::Read(unsigned long count, unsigned char* buffer) {
    return stream == nullptr ? 0 : std::fread(buffer, 1, count, stream);
}

unsigned long CFileIO::Write(unsigned long count, unsigned char const* buffer) {
    return stream == nullptr ? 0 : std::fwrite(buffer, 1, count, stream);
}

unsigned long CFileIO::WriteString(const char* text, bool newLine) {
    constexpr unsigned char lineEnd[] = {'\r', '\n'};
    unsigned long written = Write(std::strlen(text), reinterpret_cast<unsigned char const*>(text));
    if (newLine) written += Write(std::size(lineEnd), lineEnd);
    return written;
}

long CFileIO::PreAllocate(long) {
    return 0;
}

long CFileIO::SetFileCreatorType(CFileName const*, unsigned long, unsigned long) {
    return 0;
}

void CFileIO::RequireOpen(int line) const {
    if (IsOpen()) return;
    throw CFileIOException(fileName, CFileIOException::FileClosed, kNotOpen, szSourceFile, line);
}
