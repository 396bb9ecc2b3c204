#pragma once

#include <cstddef>
#include <cstdint>

/// \file
/// The two shared-memory segments through which the link talks, byte for byte.
///
/// The host application creates and removes both; a client only opens them. Every number is
/// little-endian. `docs/link-protocol.md` draws both as byte maps and tells who writes what when.

/// Name of the directory segment, in which the running host announces itself.
inline constexpr char szDirectorySegment[] = "__KEL_TAN_INTERPROCESS_DIR6__";

/// What a host's message segment is called, before its id in decimal.
inline constexpr char szHostSegmentPrefix[] = "TAN_Host_";

// Four-byte packing keeps the 64-bit heartbeat at offset 12 while every 32-bit word stays aligned
// for atomic access.
#pragma pack(push, 4)

/// A condition variable of three words, the layout of Boost.Interprocess's spin condition.
struct ConditionWords {
    std::uint32_t nEnterLock;  ///< 0 free, 1 held
    std::uint32_t nCommand;    ///< one of ConditionCommand
    std::uint32_t
        nWaiterCount;  ///< how many wait; changed under the enter lock or by a woken waiter
};

/// The start of the directory segment. Bytes behind it are not used.
struct DirectoryRecord {
    std::uint32_t nLock;         ///< lock word around the next two fields but one
    std::uint32_t nUpdateCount;  ///< changes whenever the directory does; read without the lock
    std::int32_t nCurrentHost;   ///< id of the host with a selected session; 0: none selected
    std::int64_t lHeartbeat;     ///< link time (LinkClock.h) of the host's last refresh
};

/// The start of a host's message segment. The two text buffers lie anywhere behind it.
struct MessageRecord {
    std::uint32_t nReserved0;         ///< left to the host
    std::uint32_t nRequestLock;       ///< lock word, held by a client for a whole exchange
    std::uint32_t nExchangeMutex;     ///< lock word of both conditions, the buffers and the flags
    ConditionWords requestCondition;  ///< the host waits here for requests
    ConditionWords replyCondition;    ///< the client waits here for its reply
    std::uint8_t fPending;            ///< 1 from the request until its reply is in the buffer
    std::uint8_t fClosed;             ///< non-zero: the host takes no requests
    std::uint16_t nPadding;           ///< not used
    std::int32_t nRequestCapacity;    ///< bytes for a request, its NUL included
    std::int32_t nReserved44;         ///< left to the host
    std::int32_t nBufferOffset;       ///< where the request and then the reply stand
    std::int32_t nErrorOffset;        ///< where the error text stands
};

#pragma pack(pop)

/// What `ConditionWords::nCommand` may hold.
enum ConditionCommand : std::uint32_t {
    kCommandSleep = 0,      ///< nobody has been notified; waiters go on waiting
    kCommandNotifyOne = 1,  ///< one waiter may go; it sets the word back
    kCommandNotifyAll = 2   ///< all waiters may go; the last one sets the word back
};

static_assert(sizeof(ConditionWords) == 12);
static_assert(offsetof(ConditionWords, nEnterLock) == 0);
static_assert(offsetof(ConditionWords, nCommand) == 4);
static_assert(offsetof(ConditionWords, nWaiterCount) == 8);

static_assert(sizeof(DirectoryRecord) == 20);
static_assert(offsetof(DirectoryRecord, nLock) == 0);
static_assert(offsetof(DirectoryRecord, nUpdateCount) == 4);
static_assert(offsetof(DirectoryRecord, nCurrentHost) == 8);
static_assert(offsetof(DirectoryRecord, lHeartbeat) == 12);

static_assert(sizeof(MessageRecord) == 56);
static_assert(offsetof(MessageRecord, nReserved0) == 0);
static_assert(offsetof(MessageRecord, nRequestLock) == 4);
static_assert(offsetof(MessageRecord, nExchangeMutex) == 8);
static_assert(offsetof(MessageRecord, requestCondition) == 12);
static_assert(offsetof(MessageRecord, replyCondition) == 24);
static_assert(offsetof(MessageRecord, fPending) == 36);
static_assert(offsetof(MessageRecord, fClosed) == 37);
static_assert(offsetof(MessageRecord, nPadding) == 38);
static_assert(offsetof(MessageRecord, nRequestCapacity) == 40);
static_assert(offsetof(MessageRecord, nReserved44) == 44);
static_assert(offsetof(MessageRecord, nBufferOffset) == 48);
static_assert(offsetof(MessageRecord, nErrorOffset) == 52);
