#pragma once

#include <dlfcn.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/ui/ui.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <string>

/// What the window side of a workstation is: opens the window of a plug-in, from the module's file,
/// by either extension, and turns it.
class CPlugInWindowHost {
public:
    CPlugInWindowHost(char const* szModule, std::string const& strUri, LV2_Handle plugIn,
                      char const* szFeature = nullptr, void* feature = nullptr)
        : m_pModule(dlopen(szModule, RTLD_NOW | RTLD_LOCAL)) {
        if (m_pModule == nullptr) throw std::runtime_error(dlerror());
        auto* const find =
            reinterpret_cast<LV2UI_DescriptorFunction>(dlsym(m_pModule, "lv2ui_descriptor"));
        for (std::uint32_t nIndex = 0; (m_pDescriptor = find(nIndex)) != nullptr; ++nIndex) {
            if (strUri == m_pDescriptor->URI) break;
        }
        if (m_pDescriptor == nullptr) throw std::runtime_error("no window " + strUri);
        const LV2_Feature instance{LV2_INSTANCE_ACCESS_URI, plugIn};
        const LV2_Feature more{szFeature, feature};
        const std::array<LV2_Feature const*, 3> features{
            &instance, szFeature == nullptr ? nullptr : &more, nullptr};
        m_Handle = m_pDescriptor->instantiate(m_pDescriptor, "", "", Write, this, &widget,
                                              features.data());
        if (m_Handle == nullptr) throw std::runtime_error("no instance of " + strUri);
    }

    ~CPlugInWindowHost() {
        m_pDescriptor->cleanup(m_Handle);
        dlclose(m_pModule);
    }
    CPlugInWindowHost(CPlugInWindowHost const&) = delete;
    CPlugInWindowHost& operator=(CPlugInWindowHost const&) = delete;

    void Show() { Extension<LV2UI_Show_Interface>(LV2_UI__showInterface).show(m_Handle); }
    void Hide() { Extension<LV2UI_Show_Interface>(LV2_UI__showInterface).hide(m_Handle); }
    /// False when the user closed the window.
    bool Turn() {
        return Extension<LV2UI_Idle_Interface>(LV2_UI__idleInterface).idle(m_Handle) == 0;
    }

    void TellControl(std::uint32_t nPort, float value) {
        m_pDescriptor->port_event(m_Handle, nPort, sizeof(value), 0, &value);
    }

    LV2UI_Widget widget = nullptr;
    std::function<void(std::uint32_t, float)> onWrite;

private:
    static void Write(LV2UI_Controller host, std::uint32_t nPort, std::uint32_t nSize,
                      std::uint32_t nFormat, void const* buffer) {
        auto* self = static_cast<CPlugInWindowHost*>(host);
        if (nFormat == 0 && nSize == sizeof(float) && self->onWrite) {
            self->onWrite(nPort, *static_cast<float const*>(buffer));
        }
    }

    template <typename Interface>
    Interface const& Extension(char const* szUri) const {
        return *static_cast<Interface const*>(m_pDescriptor->extension_data(szUri));
    }

    void* m_pModule;
    LV2UI_Descriptor const* m_pDescriptor = nullptr;
    LV2UI_Handle m_Handle = nullptr;
};
