#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>

#include "platform/WindowHolder.h"
#include "plugin/ExternalWindow.h"
#include "plugin/PlugInAccess.h"

// The window itself is in a process of its own, which the plug-in starts. What a workstation loads
// from here only orders it.

namespace {

constexpr char szExternalUri[] = "urn:tavarin:pro:external-window";
constexpr char szWindowUri[] = "urn:tavarin:pro:window";
constexpr char szEmbeddedUri[] = "urn:tavarin:pro:embedded-window";

struct CFeatures {
    CPlugInHandle const* pInstance = nullptr;
    LV2_URID_Map const* pMap = nullptr;
    LV2_Options_Option const* pOptions = nullptr;
    CExternalHost const* pHost = nullptr;
    void const* pParent = nullptr;
    LV2UI_Resize const* pResize = nullptr;

    explicit CFeatures(LV2_Feature const* const* features) {
        for (auto feature = features; feature != nullptr && *feature != nullptr; ++feature) {
            Keep((*feature)->URI, LV2_INSTANCE_ACCESS_URI, (*feature)->data, &pInstance);
            Keep((*feature)->URI, LV2_URID__map, (*feature)->data, &pMap);
            Keep((*feature)->URI, LV2_OPTIONS__options, (*feature)->data, &pOptions);
            Keep((*feature)->URI, szExternalUiHost, (*feature)->data, &pHost);
            Keep((*feature)->URI, LV2_UI__parent, (*feature)->data, &pParent);
            Keep((*feature)->URI, LV2_UI__resize, (*feature)->data, &pResize);
        }
    }

private:
    template <typename Data>
    static void Keep(char const* szUri, char const* szWanted, void* data, Data const** kept) {
        if (std::strcmp(szUri, szWanted) == 0) *kept = static_cast<Data const*>(data);
    }
};

/// The plug-in's window desk by messages, for a module in another process than the plug-in.
class CDistantDesk final : public CWindowDesk {
public:
    CDistantDesk(LV2_URID_Map const& map, LV2UI_Write_Function write, LV2UI_Controller controller)
        : m_EventTransfer(map.map(map.handle, LV2_ATOM__eventTransfer)),
          m_OrderType(map.map(map.handle, szWindowOrderUri)),
          m_NoteType(map.map(map.handle, szWindowNoteUri)),
          m_Write(write),
          m_Controller(controller) {}

    void Order(CWindowOrder const& order) override {
        const struct {
            LV2_Atom head;
            CWindowOrder order;
        } message{{sizeof(order), m_OrderType}, order};
        m_Write(m_Controller, portControl, sizeof(message), m_EventTransfer, &message);
    }

    std::optional<CWindowNote> TakeNote() override {
        if (m_Notes.empty()) return std::nullopt;
        const CWindowNote note = m_Notes.front();
        m_Notes.pop_front();
        return note;
    }

    void Hear(std::uint32_t nPort, std::uint32_t nSize, std::uint32_t nFormat, void const* buffer) {
        CWindowNote note;
        LV2_Atom head{};
        if (nPort != portNotify || nFormat != m_EventTransfer) return;
        if (nSize < sizeof(head) + sizeof(note)) return;
        std::memcpy(&head, buffer, sizeof(head));
        if (head.type != m_NoteType || head.size != sizeof(note)) return;
        std::memcpy(static_cast<void*>(&note), static_cast<char const*>(buffer) + sizeof(head),
                    sizeof(note));
        m_Notes.push_back(note);
    }

private:
    const LV2_URID m_EventTransfer;
    const LV2_URID m_OrderType;
    const LV2_URID m_NoteType;
    const LV2UI_Write_Function m_Write;
    const LV2UI_Controller m_Controller;
    std::deque<CWindowNote> m_Notes;
};

/// One window in a workstation, whichever of the extensions asks for it.
struct CLv2Window : CExternalWidget {
    LV2UI_Write_Function write = nullptr;
    LV2UI_Controller controller = nullptr;
    CExternalHost const* pHost = nullptr;
    std::optional<CWindowHolder> holder;
    std::optional<CDistantDesk> distant;
    CWindowDesk* pDesk = nullptr;
    CWindowOrder order;
    bool fClosed = false;

    void Say(bool fShow) {
        order.fShow = fShow;
        if (fShow) fClosed = false;
        pDesk->Order(order);
    }

    void Turn() {
        while (const std::optional<CWindowNote> note = pDesk->TakeNote()) {
            if (note->fClosed) {
                fClosed = true;
            } else if (write != nullptr) {
                write(controller, note->nPort, sizeof(note->value), 0, &note->value);
            }
        }
    }

    void Embed(CFeatures const& features) {
        order.scale = std::max(order.scale, 1.0F);
        const int nWidth = static_cast<int>(std::lround(kWindowWidth * order.scale));
        const int nHeight = static_cast<int>(std::lround(kWindowHeight * order.scale));
        holder.emplace(reinterpret_cast<std::uintptr_t>(features.pParent), nWidth, nHeight);
        order.nParent = holder->Id();
        if (features.pResize != nullptr) {
            features.pResize->ui_resize(features.pResize->handle, nWidth, nHeight);
        }
        Say(true);
    }

    void ReadOptions(CFeatures const& features) {
        if (features.pOptions == nullptr || features.pMap == nullptr) return;
        LV2_URID_Map const& map = *features.pMap;
        const LV2_URID scale = map.map(map.handle, LV2_UI__scaleFactor);
        const LV2_URID title = map.map(map.handle, LV2_UI__windowTitle);
        for (auto option = features.pOptions; option->key != 0; ++option) {
            if (option->key == scale && option->size == sizeof(float)) {
                order.scale = *static_cast<float const*>(option->value);
            } else if (option->key == title && option->value != nullptr) {
                order.title.Set(static_cast<char const*>(option->value));
            }
        }
    }
};

CLv2Window& Window(void* handle) {
    return *static_cast<CLv2Window*>(handle);
}

int Show(LV2UI_Handle handle) {
    Window(handle).Say(true);
    return 0;
}

int Hide(LV2UI_Handle handle) {
    Window(handle).Say(false);
    return 0;
}

int Idle(LV2UI_Handle handle) {
    Window(handle).Turn();
    return Window(handle).fClosed ? 1 : 0;
}

void RunExternal(CExternalWidget* widget) {
    auto& window = static_cast<CLv2Window&>(*widget);
    if (window.fClosed || Idle(&window) == 0) return;
    if (window.pHost->uiClosed != nullptr) window.pHost->uiClosed(window.controller);
}

void ShowExternal(CExternalWidget* widget) {
    static_cast<CLv2Window*>(widget)->Say(true);
}

void HideExternal(CExternalWidget* widget) {
    static_cast<CLv2Window*>(widget)->Say(false);
}

LV2UI_Handle Instantiate(LV2UI_Descriptor const* descriptor, char const* /*plugInUri*/,
                         char const* /*bundle*/, LV2UI_Write_Function write,
                         LV2UI_Controller controller, LV2UI_Widget* widget,
                         LV2_Feature const* const* list) try {
    *widget = nullptr;
    const CFeatures features(list);
    auto window = std::make_unique<CLv2Window>();
    window->run = RunExternal;
    window->show = ShowExternal;
    window->hide = HideExternal;
    window->write = write;
    window->controller = controller;
    window->ReadOptions(features);
    if (features.pInstance != nullptr) {
        window->pDesk = features.pInstance->pDesk;
    } else if (features.pMap != nullptr && write != nullptr) {
        window->pDesk = &window->distant.emplace(*features.pMap, write, controller);
    } else {
        return nullptr;
    }
    if (std::strcmp(descriptor->URI, szExternalUri) == 0) {
        window->pHost = features.pHost;
        if (window->pHost == nullptr) return nullptr;
        if (window->pHost->szName != nullptr) window->order.title.Set(window->pHost->szName);
        *widget = static_cast<CExternalWidget*>(window.get());
    }
    if (std::strcmp(descriptor->URI, szEmbeddedUri) == 0) {
        if (features.pParent == nullptr) return nullptr;
        window->Embed(features);
        *widget = reinterpret_cast<LV2UI_Widget>(window->holder->Id());
    }
    return window.release();
} catch (std::exception const&) {
    return nullptr;
}

void Cleanup(LV2UI_Handle handle) {
    const std::unique_ptr<CLv2Window> window(&Window(handle));
    window->Say(false);
}

void PortEvent(LV2UI_Handle handle, std::uint32_t nPort, std::uint32_t nSize, std::uint32_t nFormat,
               void const* buffer) {
    CLv2Window& window = Window(handle);
    if (window.distant) window.distant->Hear(nPort, nSize, nFormat, buffer);
}

void const* ExtensionData(char const* szUri) {
    static const LV2UI_Show_Interface kShow = {Show, Hide};
    static const LV2UI_Idle_Interface kIdle = {Idle};
    if (std::strcmp(szUri, LV2_UI__showInterface) == 0) return &kShow;
    if (std::strcmp(szUri, LV2_UI__idleInterface) == 0) return &kIdle;
    return nullptr;
}

// What is shown in the workstation's own window is shown and hidden with it.
void const* IdleOnly(char const* szUri) {
    return std::strcmp(szUri, LV2_UI__showInterface) == 0 ? nullptr : ExtensionData(szUri);
}

const LV2UI_Descriptor kDescriptors[] = {
    {szWindowUri, Instantiate, Cleanup, PortEvent, ExtensionData},
    {szExternalUri, Instantiate, Cleanup, PortEvent, nullptr},
    {szEmbeddedUri, Instantiate, Cleanup, PortEvent, IdleOnly},
};

}  // namespace

LV2_SYMBOL_EXPORT LV2UI_Descriptor const* lv2ui_descriptor(std::uint32_t nIndex) {
    return nIndex < std::size(kDescriptors) ? &kDescriptors[nIndex] : nullptr;
}
