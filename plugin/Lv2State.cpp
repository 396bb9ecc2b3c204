#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "plugin/Lv2PlugIn.h"

namespace {

// The workstation's own form of paths, which lets a session move to another place.
class CPathMap {
public:
    explicit CPathMap(LV2_Feature const* const* features) {
        for (auto feature = features; feature != nullptr && *feature != nullptr; ++feature) {
            if (std::strcmp((*feature)->URI, LV2_STATE__mapPath) == 0) {
                m_pMap = static_cast<LV2_State_Map_Path*>((*feature)->data);
            } else if (std::strcmp((*feature)->URI, LV2_STATE__freePath) == 0) {
                m_pFree = static_cast<LV2_State_Free_Path*>((*feature)->data);
            }
        }
    }

    std::string Abstract(std::string const& strPath) const {
        // A workstation may copy what it is told of, so that must be there.
        std::error_code error;
        if (m_pMap == nullptr || !std::filesystem::exists(strPath, error)) return strPath;
        return Take(m_pMap->abstract_path(m_pMap->handle, strPath.c_str()), strPath);
    }

    std::string Absolute(std::string const& strPath) const {
        if (m_pMap == nullptr || strPath.empty()) return strPath;
        return Take(m_pMap->absolute_path(m_pMap->handle, strPath.c_str()), strPath);
    }

private:
    std::string Take(char* szMapped, std::string const& strPath) const {
        if (szMapped == nullptr) return strPath;
        std::string strMapped = szMapped;
        if (m_pFree != nullptr) {
            m_pFree->free_path(m_pFree->handle, szMapped);
        } else {
            std::free(szMapped);
        }
        return strMapped;
    }

    LV2_State_Map_Path* m_pMap = nullptr;
    LV2_State_Free_Path* m_pFree = nullptr;
};

CLv2PlugIn& Instance(LV2_Handle instance) {
    return static_cast<CLv2PlugIn&>(*static_cast<CPlugInHandle*>(instance));
}

LV2_State_Status Store(LV2_State_Store_Function store, LV2_State_Handle handle, LV2_URID key,
                       LV2_URID type, std::string const& strImage) {
    return store(handle, key, strImage.data(), strImage.size(), type,
                 LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
}

LV2_State_Status Save(LV2_Handle handle, LV2_State_Store_Function store,
                      LV2_State_Handle stateHandle, std::uint32_t /*flags*/,
                      LV2_Feature const* const* features) {
    CLv2PlugIn& instance = Instance(handle);
    if (instance.names.session == 0) return LV2_STATE_ERR_NO_FEATURE;
    const CPathMap paths(features);
    CPlugInState state = instance.plugIn.State();
    for (CTake& take : state.takes) take.strFile = paths.Abstract(take.strFile);
    state.strReturnedFile = paths.Abstract(state.strReturnedFile);
    const std::string strImage = SaveState(state);
    if (strImage.empty()) return LV2_STATE_ERR_UNKNOWN;
    const LV2_URID type = instance.names.atomChunk;
    if (!instance.strUnread.empty()) {
        Store(store, stateHandle, instance.names.unread, type, instance.strUnread);
    }
    return Store(store, stateHandle, instance.names.session, type, strImage);
}

LV2_State_Status Restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve,
                         LV2_State_Handle stateHandle, std::uint32_t /*flags*/,
                         LV2_Feature const* const* features) {
    CLv2PlugIn& instance = Instance(handle);
    if (instance.names.session == 0) return LV2_STATE_ERR_NO_FEATURE;
    std::size_t nSize = 0;
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    void const* data = retrieve(stateHandle, instance.names.session, &nSize, &type, &flags);
    if (data == nullptr) return LV2_STATE_ERR_NO_PROPERTY;
    const std::string strImage(static_cast<char const*>(data), nSize);
    CPlugInState state;
    std::string strReason;
    if (!LoadState(strImage, static_cast<std::int32_t>(instance.plugIn.Kind()), &state,
                   &strReason)) {
        instance.strUnread = strImage;
        instance.plugIn.Report(PlugInResult::StateUnreadable, strReason);
        return LV2_STATE_ERR_UNKNOWN;
    }
    const CPathMap paths(features);
    for (CTake& take : state.takes) take.strFile = paths.Absolute(take.strFile);
    state.strReturnedFile = paths.Absolute(state.strReturnedFile);
    instance.plugIn.Restore(state);
    return LV2_STATE_SUCCESS;
}

}  // namespace

const LV2_State_Interface kStateInterface = {Save, Restore};
