#include "host/SessionKeeper.h"

#include <cstdio>
#include <exception>
#include <utility>

namespace {

constexpr std::chrono::seconds kBetweenTries{1};
// However large a session grows, saving it takes a fifth of the time at most.
constexpr int kRestPerWork = 4;

}  // namespace

void CSessionKeeper::Add(std::string const& strPath, Writer write) {
    m_Files.push_back({strPath, std::move(write), {}, {}, {}});
}

void CSessionKeeper::Begin(CReferenceHost const& host) {
    for (File& file : m_Files) Write(file, host.Snapshot());
}

void CSessionKeeper::KeepUp(CReferenceHost const& host) {
    for (File& file : m_Files) {
        if (Clock::now() < file.m_NextTry || file.m_nKept == host.UpdateCount()) continue;
        const bool fFailed = !file.m_strFailure.empty();
        TryToWrite(file, host);
        if (fFailed == !file.m_strFailure.empty()) continue;
        if (fFailed) {
            std::fprintf(stderr, "tavarin-host: \"%s\" is kept again\n", file.m_strPath.c_str());
        } else {
            std::fprintf(stderr, "tavarin-host: %s; it is tried again every second\n",
                         file.m_strFailure.c_str());
        }
    }
}

bool CSessionKeeper::End(CReferenceHost const& host) {
    bool fAllKept = true;
    for (File& file : m_Files) {
        if (file.m_nKept == host.UpdateCount()) continue;
        TryToWrite(file, host);
        if (file.m_strFailure.empty()) continue;
        std::fprintf(stderr, "tavarin-host: %s; \"%s\" lacks what has changed since\n",
                     file.m_strFailure.c_str(), file.m_strPath.c_str());
        fAllKept = false;
    }
    return fAllKept;
}

void CSessionKeeper::Write(File& file, CSession const& session) {
    file.m_Write(session, file.m_strPath);
    file.m_nKept = session.UpdateCount();
}

void CSessionKeeper::TryToWrite(File& file, CReferenceHost const& host) try {
    const Clock::time_point start = Clock::now();
    Write(file, host.Snapshot());
    file.m_strFailure.clear();
    const Clock::time_point end = Clock::now();
    file.m_NextTry = end + kRestPerWork * (end - start);
} catch (std::exception const& failure) {
    file.m_strFailure = failure.what();
    file.m_NextTry = Clock::now() + kBetweenTries;
}
