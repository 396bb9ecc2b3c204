#include "colours/SchemeFile.h"

#include "FileIO/FileName.h"
#include "colours/DeviceRGB.h"

int SaveSchemeFile(CComponentsColors const& scheme, CFileName const& file) {
    CParameterBlock session;
    scheme.Save(&session);
    return session.SaveBinarySession(szSchemeIdentifier, &file);
}

int LoadSchemeFile(CComponentsColors& scheme, CFileName const& file) {
    const std::vector<const char*> identifiers{szSchemeIdentifier};
    CParameterBlock session;
    const int status = session.LoadBinarySession(&identifiers, &file);
    if (status != sessionDone && status != sessionBodyFailed) return status;

    return scheme.Load(&session, CDeviceRGB()) ? status : static_cast<int>(sessionBodyFailed);
}

std::string SchemeImage(CComponentsColors const& scheme) {
    CParameterBlock session;
    scheme.Save(&session);
    CFMutableDataRef data = CFDataCreateMutable(nullptr, 0);
    const unsigned long size = session.SaveBinarySessionToMemory(szSchemeIdentifier, data);
    std::string image(reinterpret_cast<const char*>(CFDataGetMutableBytePtr(data)), size);
    CFRelease(data);
    return image;
}

bool ReplaceScheme(CComponentsColors& scheme, std::string const& strImage) {
    const std::vector<const char*> identifiers{szSchemeIdentifier};
    CParameterBlock session;
    const int status = session.LoadBinarySessionFromMemory(
        &identifiers, reinterpret_cast<unsigned char const*>(strImage.data()),
        static_cast<unsigned int>(strImage.size()));
    CComponentsColors whole;
    if (status != sessionDone || !whole.Load(&session, CDeviceRGB())) return false;
    scheme.Clear();
    return scheme.Load(&session, CDeviceRGB());
}
