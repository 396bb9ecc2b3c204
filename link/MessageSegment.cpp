#include "link/MessageSegment.h"

#include <algorithm>
#include <cstring>

CMessageSegment::CMessageSegment(unsigned char* pBytes, std::size_t nSize) noexcept {
    if (!pBytes || nSize < sizeof(MessageRecord)) return;

    auto* const pRecord = reinterpret_cast<MessageRecord*>(pBytes);
    const std::int64_t lSize = static_cast<std::int64_t>(nSize);
    const std::int64_t lHeader = sizeof(MessageRecord);
    const std::int64_t lCapacity = __atomic_load_n(&pRecord->nRequestCapacity, __ATOMIC_RELAXED);
    const std::int64_t lBuffer = __atomic_load_n(&pRecord->nBufferOffset, __ATOMIC_RELAXED);
    const std::int64_t lError = __atomic_load_n(&pRecord->nErrorOffset, __ATOMIC_RELAXED);
    if (lCapacity < 1 || lBuffer < lHeader || lBuffer + lCapacity > lSize) return;
    if (lError < lHeader || lError >= lSize) return;

    m_pRecord = pRecord;
    m_pRequest = pBytes + lBuffer;
    m_pError = pBytes + lError;
    m_pEnd = pBytes + nSize;
    m_nCapacity = static_cast<std::size_t>(lCapacity);
}

bool CMessageSegment::IsClosed() const noexcept {
    return __atomic_load_n(&m_pRecord->fClosed, __ATOMIC_SEQ_CST) != 0;
}

bool CMessageSegment::IsPending() const noexcept {
    return __atomic_load_n(&m_pRecord->fPending, __ATOMIC_SEQ_CST) != 0;
}

void CMessageSegment::SetPending() noexcept {
    __atomic_store_n(&m_pRecord->fPending, std::uint8_t{1}, __ATOMIC_SEQ_CST);
}

void CMessageSegment::WriteRequest(std::string const& request) noexcept {
    const std::size_t nLength = std::min(std::strlen(request.c_str()), m_nCapacity - 1);
    std::memcpy(m_pRequest, request.data(), nLength);
    std::memset(m_pRequest + nLength, 0, m_nCapacity - nLength);
}

std::string CMessageSegment::ReadReply() const {
    return std::string(TextAt(m_pRequest));
}

std::string CMessageSegment::ReadError() const {
    return std::string(TextAt(m_pError));
}

std::string_view CMessageSegment::TextAt(const unsigned char* pStart) const noexcept {
    const auto* const pText = reinterpret_cast<const char*>(pStart);
    return {pText, strnlen(pText, static_cast<std::size_t>(m_pEnd - pStart))};
}
