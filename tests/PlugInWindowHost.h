#pragma once

#include <dlfcn.h>
#include <lv2/atom/atom.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/ui/ui.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "plugin/PlugInTable.h"

/// What the window side of a workstation is: opens the window of a plug-in, from the module's file,
/// by either extension, and turns it.
class CPlugInWindowHost {
public:
    CPlugInWindowHost(char const* szModule, std::string const& strUri,
                      std::vector<LV2_Feature> const& features)
        : m_pModule(dlopen(szModule, RTLD_NOW | RTLD_LOCAL)) {
        if (m_pModule == nullptr) throw std::runtime_error(dlerror());
        auto* const find =
            reinterpret_cast<LV2UI_DescriptorFunction>(dlsym(m_pModule, "lv2ui_descriptor"));
        for (std::uint32_t nIndex = 0; (m_pDescriptor = find(nIndex)) != nullptr; ++nIndex) {
            if (strUri == m_pDescriptor->URI) break;
        }
        if (m_pDescriptor == nullptr) throw std::runtime_error("no window " + strUri);
        std::vector<LV2_Feature const*> list;
        for (LV2_Feature const& feature : features) list.push_back(&feature);
        list.push_back(nullptr);
        m_Handle =
            m_pDescriptor->instantiate(m_pDescriptor, "", "", Write, this, &widget, list.data());
        if (m_Handle == nullptr) throw std::runtime_error("no instance of " + strUri);
    }

    /// The window of a plug-in in the same process.
    CPlugInWindowHost(char const* szModule, std::string const& strUri, LV2_Handle plugIn)
        : CPlugInWindowHost(szModule, strUri,
                            std::vector<LV2_Feature>{{LV2_INSTANCE_ACCESS_URI, plugIn}}) {}

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

    /// Passes a message of the plug-in on to its window's module.
    void TellMessage(std::uint32_t nFormat, LV2_Atom const* message) {
        m_pDescriptor->port_event(m_Handle, portNotify,
                                  static_cast<std::uint32_t>(sizeof(*message)) + message->size,
                                  nFormat, message);
    }

    LV2UI_Widget widget = nullptr;
    std::function<void(std::uint32_t, float)> onWrite;
    std::function<void(LV2_Atom const*)> onMessage;

private:
    static void Write(LV2UI_Controller host, std::uint32_t nPort, std::uint32_t nSize,
                      std::uint32_t nFormat, void const* buffer) {
        auto* self = static_cast<CPlugInWindowHost*>(host);
        if (nFormat == 0 && nSize == sizeof(float) && self->onWrite) {
            self->onWrite(nPort, *static_cast<float const*>(buffer));
        }
        if (nFormat != 0 && nPort == portControl && self->onMessage) {
            self->onMessage(static_cast<LV2_Atom const*>(buffer));
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
