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
