#include "plugin/SharedGuide.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>

namespace {

using FileTime = std::filesystem::file_time_type;

// The time at which its file was finished; the first of all times when there is no file.
FileTime TimeOf(CTake const& take) {
    std::error_code missing;
    const FileTime time = std::filesystem::last_write_time(take.strFile, missing);
    return missing ? FileTime::min() : time;
}

std::int64_t AgeOf(CTake const& take) {
    const FileTime time = TimeOf(take);
    if (time == FileTime::min()) return -1;
    const auto age = FileTime::clock::now() - time;
    return std::max<std::int64_t>(std::chrono::duration_cast<std::chrono::seconds>(age).count(), 0);
}

}  // namespace

std::shared_ptr<CSharedGuide> CSharedGuide::Join() {
    static std::mutex lock;
    static std::weak_ptr<CSharedGuide> shared;
    const std::lock_guard guard(lock);
    std::shared_ptr<CSharedGuide> joined = shared.lock();
    if (!joined) shared = joined = std::make_shared<CSharedGuide>();
    return joined;
}

void CSharedGuide::Put(CTake const& guide) {
    const std::lock_guard lock(m_Lock);
    m_Guide = guide;
}

void CSharedGuide::Offer(CTake const& guide) {
    const std::lock_guard lock(m_Lock);
    if (!m_Guide || TimeOf(guide) > TimeOf(*m_Guide)) m_Guide = guide;
}

std::optional<CGuide> CSharedGuide::Last() const {
    const std::lock_guard lock(m_Lock);
    if (!m_Guide) return std::nullopt;
    return CGuide{*m_Guide, AgeOf(*m_Guide)};
}
