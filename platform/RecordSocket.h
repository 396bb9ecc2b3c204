#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <utility>

/// One end of a pair of sockets that carries records between two processes of one machine: each
/// arrives whole or not at all, in order, and nobody ever waits.
class CRecordSocket {
public:
    /// Takes a descriptor over and closes it at the end.
    explicit CRecordSocket(int nDescriptor) noexcept;
    ~CRecordSocket();
    CRecordSocket(CRecordSocket const&) = delete;
    CRecordSocket& operator=(CRecordSocket const&) = delete;

    /// Two descriptors, the ends of one pair; no program that is started inherits them. Throws
    /// `std::system_error`.
    static std::pair<int, int> MakePair();

    /// False when the other end is gone or does not take what it was sent. The socket is closed
    /// then.
    bool Send(void const* record, std::size_t nSize) noexcept;

    /// The size of the next record, which was written to `record`; one of more than `nRoom` bytes
    /// is cut. Nothing when none waits.
    std::optional<std::size_t> Receive(void* record, std::size_t nRoom) noexcept;

    /// Whether the other end was there when it was last spoken to or heard.
    bool IsOpen() const { return m_nDescriptor >= 0; }

    /// Waits until a record or the end is there, at most so long. False when neither came.
    bool WaitFor(int nMilliseconds) const noexcept;

    /// Tells the other end that nothing more comes.
    void Close() noexcept;

    int Descriptor() const { return m_nDescriptor; }

private:
    bool IsOurs() const noexcept;

    int m_nDescriptor;
    dev_t m_nDevice = 0;
    ino_t m_nNode = 0;
};
