#include "workstation/RecordText.h"

#include <cstring>
#include <sstream>

#include "Source/Notifications.h"

namespace {

std::string PathText(const char (&szPath)[kRecordPathSize]) {
    return "\"" + std::string(szPath, strnlen(szPath, sizeof(szPath))) + "\"";
}

}  // namespace

std::string NotificationName(std::int32_t nType) {
    std::string strName;
    for (int nShift = 24; nShift >= 0; nShift -= 8) {
        strName += static_cast<char>(static_cast<std::uint32_t>(nType) >> nShift & 0xFF);
    }
    return strName;
}

std::string RecordText(std::int32_t nType, void const* pRecord) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(17);
    if (nType == notifyPostAnalyze) {
        auto const& record = *static_cast<paramPostAnalyze const*>(pRecord);
        text << "szFilePath " << PathText(record.szFilePath) << "  dFilePosition "
             << record.dFilePosition << "  dRegionStart " << record.dRegionStart << "  dRegionEnd "
             << record.dRegionEnd;
    } else if (nType == notifyExportSelectedRegion) {
        auto const& record = *static_cast<paramExportSelectedRegion const*>(pRecord);
        text << "nSampleRate " << record.nSampleRate << "  szFilePath "
             << PathText(record.szFilePath) << "  fResult " << record.fResult;
    } else if (nType == notifyRenderSelectedRegion) {
        auto const& record = *static_cast<paramRenderSelectedRegion const*>(pRecord);
        text << "nSampleRate " << record.nSampleRate << "  lStart " << record.lStart << "  lEnd "
             << record.lEnd << "  fResult " << record.fResult;
    } else if (nType == notifyUpdateCount) {
        text << "lUpdateCount " << static_cast<paramUpdateCount const*>(pRecord)->lUpdateCount;
    } else if (nType == notifyPrint) {
        text << "\"" << static_cast<const char*>(pRecord) << "\"";
    }
    return text.str();
}
