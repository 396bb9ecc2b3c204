#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "FileIO/FileName.h"
#import "Source/ViewHelpers.h"
#include "platform/Assertion.h"
#include "tests/PeerHost.h"
#include "tests/SegmentNames.h"

namespace {

constexpr int kHost = 3;

// A host that takes everything and never reports a duplicate, whose file would be deleted.
CPeerHost& Host() {
    static const bool fClaimed = ClaimSegmentNames();
    if (!fClaimed) {
        std::fprintf(stderr, "A host application is running: quit it first.\n");
        std::exit(1);
    }
    static CPeerHost host(kHost);
    host.AnswerWith("0\n");
    return host;
}

// A record of its own, of exactly its size, filled with what there is.
template <typename Record>
std::unique_ptr<Record> RecordFrom(std::uint8_t const* data, std::size_t size) {
    auto record = std::make_unique<Record>();
    std::memcpy(static_cast<void*>(record.get()), data, std::min(size, sizeof(Record)));
    return record;
}

void Capture(CTANClientInterProcess& client, paramPostAnalyze const& capture) {
    const bool fEnds = std::find(capture.szFilePath, capture.szFilePath + kRecordPathSize, '\0') !=
                       capture.szFilePath + kRecordPathSize;
    TAVARIN_REQUIRE(HasPath(client, capture) == fEnds);
    CaptureStart(capture);
    CaptureEnd(capture);
    if (!fEnds) return;
    TAVARIN_REQUIRE(HandOverCapture(client, true, 0, capture));
    const std::string strScript = Host().LastRequest();
    const std::string strPath = EscapeBackstroke(CFileName(capture.szFilePath).GetFullPathString());
    TAVARIN_REQUIRE(strScript.find(strPath) != std::string::npos);
}

}  // namespace

// A notification: its first byte says which, the rest is the record.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size == 0) return 0;
    Host();
    CTANClientInterProcess client;
    std::uint8_t const* const pRecord = data + 1;
    const std::size_t nRecord = size - 1;
    switch (data[0] % 5) {
        case 0:
            Capture(client, *RecordFrom<paramPostAnalyze>(pRecord, nRecord));
            break;
        case 1: {
            // A file whose path does not fit is removed: none can be where this one is.
            Host().AnswerWith("2\n0\n/nowhere/" +
                              std::string(reinterpret_cast<char const*>(pRecord), nRecord));
            auto record = RecordFrom<paramExportSelectedRegion>(pRecord, nRecord);
            TAVARIN_REQUIRE(AnswerNotification(client, true, notifyExportSelectedRegion,
                                               record.get()) != Answer::Silent);
            TAVARIN_REQUIRE(!record->fResult ||
                            std::memchr(record->szFilePath, 0, sizeof(record->szFilePath)));
            break;
        }
        case 2: {
            Host().AnswerWith(std::string(reinterpret_cast<char const*>(pRecord), nRecord));
            auto record = RecordFrom<paramRenderSelectedRegion>(pRecord, nRecord);
            AnswerNotification(client, true, notifyRenderSelectedRegion, record.get());
            break;
        }
        case 3: {
            Host().AnswerWith(std::string(reinterpret_cast<char const*>(pRecord), nRecord));
            auto record = RecordFrom<paramUpdateCount>(pRecord, nRecord);
            AnswerNotification(client, true, notifyUpdateCount, record.get());
            break;
        }
        default: {
            const std::string strText(reinterpret_cast<char const*>(pRecord), nRecord);
            AnswerNotification(client, true, notifyPrint, strText.c_str());
        }
    }
    return 0;
}
