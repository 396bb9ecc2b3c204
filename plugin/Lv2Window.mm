#include <lv2/core/lv2.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/ui/ui.h>

#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>

#include "platform/ExceptionGuard.h"
#include "plugin/ExternalWindow.h"
#import "plugin/PlugInWindow.h"

namespace {

constexpr char szWindowUri[] = "urn:tavarin:pro:window";
constexpr char szExternalUri[] = "urn:tavarin:pro:external-window";

char const* DefaultTitle(PlugInKind kind) {
    if (kind == PlugInKind::APT) return "Tavarin APT Link";
    return kind == PlugInKind::Link ? "Tavarin Link" : "Tavarin Doubler Link";
}

void const* FindFeature(LV2_Feature const* const* features, char const* szUri) {
    for (auto feature = features; feature != nullptr && *feature != nullptr; ++feature) {
        if (std::strcmp((*feature)->URI, szUri) == 0) return (*feature)->data;
    }
    return nullptr;
}

/// One window in a workstation, whichever of the two extensions turns it.
struct CLv2Window : CExternalWidget {
    CPlugInAccess* plugIn = nullptr;
    LV2UI_Write_Function write = nullptr;
    LV2UI_Controller controller = nullptr;
    CExternalHost const* host = nullptr;
    std::unique_ptr<CPlugInWindow> window;
    bool fSaidClosed = false;

    void Make() {
        const bool fNamed = host != nullptr && host->szName != nullptr;
        window = std::make_unique<CPlugInWindow>(
            *plugIn, fNamed ? host->szName : DefaultTitle(plugIn->Kind()),
            [this](PlugInPort port, float value) {
                if (write != nullptr) write(controller, port, sizeof(value), 0, &value);
            });
    }
};

// Whatever goes wrong in the window must not reach the workstation, which knows neither C++'s nor
// Objective-C's exceptions.
bool Guarded(CLv2Window& ui, std::function<void()> const& action) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    bool fDone = false;
    const std::optional<std::string> strException = ExceptionIn([&] {
        try {
            action();
            fDone = true;
        } catch (std::exception const& failure) {
            ui.plugIn->Report(PlugInResult::WindowFailed, failure.what());
        }
    });
    if (strException) ui.plugIn->Report(PlugInResult::WindowFailed, *strException);
    [pool drain];
    return fDone;
}

CLv2Window& Window(void* handle) {
    return *static_cast<CLv2Window*>(handle);
}

int Show(LV2UI_Handle handle) {
    CLv2Window& ui = Window(handle);
    ui.fSaidClosed = false;
    return Guarded(ui, [&ui] { ui.window->Show(); }) ? 0 : 1;
}

int Hide(LV2UI_Handle handle) {
    CLv2Window& ui = Window(handle);
    return Guarded(ui, [&ui] { ui.window->Hide(); }) ? 0 : 1;
}

int Idle(LV2UI_Handle handle) {
    CLv2Window& ui = Window(handle);
    Guarded(ui, [&ui] { ui.window->Turn(); });
    return ui.window->IsClosed() ? 1 : 0;
}

void RunExternal(CExternalWidget* widget) {
    auto& ui = static_cast<CLv2Window&>(*widget);
    if (ui.fSaidClosed || Idle(&ui) == 0) return;
    ui.fSaidClosed = true;
    if (ui.host->uiClosed != nullptr) ui.host->uiClosed(ui.controller);
}

void ShowExternal(CExternalWidget* widget) {
    Show(static_cast<CLv2Window*>(widget));
}

void HideExternal(CExternalWidget* widget) {
    Hide(static_cast<CLv2Window*>(widget));
}

LV2UI_Handle Instantiate(LV2UI_Descriptor const* descriptor, char const* /*plugInUri*/,
                         char const* /*bundle*/, LV2UI_Write_Function write,
                         LV2UI_Controller controller, LV2UI_Widget* widget,
                         LV2_Feature const* const* features) {
    *widget = nullptr;
    auto const* handle =
        static_cast<CPlugInHandle const*>(FindFeature(features, LV2_INSTANCE_ACCESS_URI));
    if (handle == nullptr) return nullptr;
    auto ui = std::make_unique<CLv2Window>();
    ui->run = RunExternal;
    ui->show = ShowExternal;
    ui->hide = HideExternal;
    ui->plugIn = handle->pAccess;
    ui->write = write;
    ui->controller = controller;
    if (std::strcmp(descriptor->URI, szExternalUri) == 0) {
        ui->host = static_cast<CExternalHost const*>(FindFeature(features, szExternalUiHost));
        if (ui->host == nullptr) return nullptr;
        *widget = static_cast<CExternalWidget*>(ui.get());
    }
    if (!Guarded(*ui, [&ui] { ui->Make(); })) return nullptr;
    return ui.release();
}

void Cleanup(LV2UI_Handle handle) {
    CLv2Window* ui = &Window(handle);
    Guarded(*ui, [ui] { ui->window.reset(); });
    delete ui;
}

void PortEvent(LV2UI_Handle handle, std::uint32_t nPort, std::uint32_t nSize, std::uint32_t nFormat,
               void const* buffer) {
    if (nFormat != 0 || nSize != sizeof(float) || nPort >= portFirstAudio) return;
    CLv2Window& ui = Window(handle);
    const float value = *static_cast<float const*>(buffer);
    Guarded(ui, [&] { ui.window->ShowControl(static_cast<PlugInPort>(nPort), value); });
}

void const* ExtensionData(char const* szUri) {
    static const LV2UI_Show_Interface kShow = {Show, Hide};
    static const LV2UI_Idle_Interface kIdle = {Idle};
    if (std::strcmp(szUri, LV2_UI__showInterface) == 0) return &kShow;
    if (std::strcmp(szUri, LV2_UI__idleInterface) == 0) return &kIdle;
    return nullptr;
}

const LV2UI_Descriptor kDescriptors[] = {
    {szWindowUri, Instantiate, Cleanup, PortEvent, ExtensionData},
    {szExternalUri, Instantiate, Cleanup, PortEvent, nullptr},
};

}  // namespace

LV2_SYMBOL_EXPORT LV2UI_Descriptor const* lv2ui_descriptor(std::uint32_t nIndex) {
    return nIndex < std::size(kDescriptors) ? &kDescriptors[nIndex] : nullptr;
}
