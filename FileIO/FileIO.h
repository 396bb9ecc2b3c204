#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/// \file
/// Files as streams of bytes: CFileIO, and the exceptions that tell what failed.

class CFileName;

/// What every exception of this layer tells: where it was thrown and why.
class CCodeException {
public:
    const char* sourceFile = nullptr;  ///< a constant text; never freed
    std::int32_t sourceLine = 0;       ///< the line in `sourceFile`
    std::string description;           ///< for people to read
};

/// Memory ran out while a file was handled. Nothing in this layer throws it.
class CFileMemoryException : public CCodeException {};

/// An operation on a file failed. Catch it by reference.
class CFileIOException : public CCodeException {
public:
    /// What the operation was that failed.
    enum FileExceptionCode : std::int32_t {
        OpenFailed = 1,         ///< opening
        FileClosed = 2,         ///< anything on a file that is not open
        SetPositionFailed = 3,  ///< going to a place in the file
        GetPositionFailed = 4,  ///< asking for the place
        ReadFailed = 5,         ///< reading
        WriteFailed = 6,        ///< writing
        CloseFailed = 7,        ///< closing
        LengthFailed = 8,       ///< asking for the length
        DeleteFailed = 9,       ///< deleting
        Code10 = 10,            ///< has a number and no meaning
    };

    std::string fileName;    ///< the full path; empty when no file was open
    FileExceptionCode code;  ///< what failed
    std::uint64_t value;     ///< the number in the description; no system error number

    /// Keeps `source` as it is: it must outlive the exception and all its copies.
    CFileIOException(std::string const& file, FileExceptionCode failure, unsigned long number,
                     const char* source, int line);

    /// Copies everything.
    CFileIOException(CFileIOException const&) = default;

    /// Copies everything but `fileName`, which stays as it was.
    CFileIOException& operator=(CFileIOException const& other);

    /// Sets `fileName` and composes `description` from all three, the name up to its first NUL and
    /// the number as 32 signed bits. Leaves `code` and `value` alone.
    void SetDescription(std::string const& file, FileExceptionCode failure, unsigned long number);

    /// The number of this failure for callers that report numbers; 3002 for an unknown code.
    std::uint32_t GetStatus() const;
};

/// One open file. Failures to open and to position throw CFileIOException; transfers give the
/// number of bytes that went through. Between reading and writing the same file set the position.
/// Belongs to one thread.
class CFileIO {
public:
    std::FILE* stream = nullptr;  ///< null when closed
    std::string fileName;         ///< the full path of the open file

    /// No file yet.
    CFileIO() = default;
    CFileIO(CFileIO const&) = delete;
    CFileIO& operator=(CFileIO const&) = delete;

    /// Closes the file.
    virtual ~CFileIO();

    /// Closes what is open and opens `file`: for reading, or for reading and writing when `write`
    /// is true, then made anew and empty when `create` is true too. A directory cannot be opened.
    /// After a failure (OpenFailed) the object is closed but holds the name of the file.
    virtual void Open(CFileName const* file, bool write, bool create);

    /// Closes the file if one is open and forgets its name. Reports nothing.
    virtual void Close();

    /// Whether a file is open.
    virtual bool IsOpen() const;

    /// Goes to `offset` bytes from the start, beyond the end too, and returns 0. Throws
    /// SetPositionFailed when there is no such place.
    virtual long SetPosition(unsigned long offset);

    /// The place in the file, in bytes from the start. Throws GetPositionFailed for what has none.
    virtual unsigned long GetPosition();

    /// The length in bytes, the bytes just written included; the position stays. Throws
    /// LengthFailed for what has no length, such as a pipe.
    virtual unsigned long GetLength();

    /// The number of bytes read, fewer than `count` at the end of the file or on an error; 0 when
    /// closed.
    virtual unsigned long Read(unsigned long count, unsigned char* buffer);

    /// The number of bytes written, fewer than `count` on an error; 0 when closed.
    virtual unsigned long Write(unsigned long count, unsigned char const* buffer);

    /// Writes the text without its terminator, then the bytes 0D 0A when `newLine` is true. The
    /// number of bytes written in all.
    virtual unsigned long WriteString(const char* text, bool newLine);

    /// Does nothing on these platforms and returns 0.
    virtual long PreAllocate(long size);

    /// Does nothing on these platforms and returns 0.
    long SetFileCreatorType(CFileName const* file, unsigned long creator, unsigned long type);

private:
    void RequireOpen(int line) const;
};
