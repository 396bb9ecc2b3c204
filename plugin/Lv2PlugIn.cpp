#include "plugin/Lv2PlugIn.h"

#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/patch/patch.h>
#include <lv2/time/time.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <new>

namespace {

struct CName {
    LV2_URID CLv2Names::*pNumber;
    const char* szName;
};

constexpr CName kNames[] = {
    {&CLv2Names::atomChunk, LV2_ATOM__Chunk},
    {&CLv2Names::atomDouble, LV2_ATOM__Double},
    {&CLv2Names::atomFloat, LV2_ATOM__Float},
    {&CLv2Names::atomLong, LV2_ATOM__Long},
    {&CLv2Names::atomObject, LV2_ATOM__Object},
    {&CLv2Names::atomString, LV2_ATOM__String},
    {&CLv2Names::atomURID, LV2_ATOM__URID},
    {&CLv2Names::patchProperty, LV2_PATCH__property},
    {&CLv2Names::patchSet, LV2_PATCH__Set},
    {&CLv2Names::patchValue, LV2_PATCH__value},
    {&CLv2Names::timeFrame, LV2_TIME__frame},
    {&CLv2Names::timePosition, LV2_TIME__Position},
    {&CLv2Names::timeSpeed, LV2_TIME__speed},
    {&CLv2Names::message, "urn:tavarin:pro:message"},
    {&CLv2Names::session, "urn:tavarin:pro:session"},
    {&CLv2Names::unread, "urn:tavarin:pro:unread-session"},
    {&CLv2Names::windowNote, szWindowNoteUri},
    {&CLv2Names::windowOrder, szWindowOrderUri},
};

// The time that this thread worked, in seconds: what others take from it does not count.
double WorkedSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

}  // namespace

CLv2Names::CLv2Names(LV2_URID_Map const* map) {
    if (map == nullptr) return;
    for (CName const& name : kNames) this->*name.pNumber = map->map(map->handle, name.szName);
}

CLv2PlugIn::CLv2PlugIn(CPlugInVariant const& variant, int nSampleRate, LV2_URID_Map* map)
    : names(map), plugIn(variant.kind, variant.nChannels, nSampleRate) {
    pAccess = &plugIn;
    pDesk = &plugIn.Desk();
    if (map != nullptr) lv2_atom_forge_init(&m_Forge, map);
}

float CLv2PlugIn::Control(PlugInPort port) const {
    return ports[port] == nullptr ? 0 : *static_cast<float const*>(ports[port]);
}

void CLv2PlugIn::Show(PlugInPort port, float value) {
    if (ports[port] != nullptr) *static_cast<float*>(ports[port]) = value;
}

CPlugInControls CLv2PlugIn::Controls() const {
    CPlugInControls controls;
    controls.fCapture = Control(portCapture) > 0.5F;
    controls.fReturn = Control(portReturn) > 0.5F;
    controls.mode = Control(portMode) > 0.5F ? ReturnMode::Export : ReturnMode::RenderAndExport;
    controls.nTrack = static_cast<std::int32_t>(std::clamp(Control(portTrack), 0.0F, 255.0F));
    controls.fFreewheel = Control(portFreewheel) > 0.5F;
    return controls;
}

void CLv2PlugIn::Follow(LV2_Atom_Object const& position) {
    LV2_Atom const* frame = nullptr;
    LV2_Atom const* speed = nullptr;
    lv2_atom_object_get(&position, names.timeFrame, &frame, names.timeSpeed, &speed, 0);
    if (frame == nullptr || frame->type != names.atomLong) return;
    const std::int64_t lFrame = reinterpret_cast<LV2_Atom_Long const*>(frame)->body;
    double dSpeed = 1;
    if (speed != nullptr && speed->type == names.atomFloat) {
        dSpeed = reinterpret_cast<LV2_Atom_Float const*>(speed)->body;
    }
    plugIn.SetTransport(lFrame, dSpeed);
}

void CLv2PlugIn::RunChannels(std::uint32_t nFrom, std::uint32_t nTo) {
    float const* inputs[2] = {};
    float* outputs[2] = {};
    for (int nChannel = 0; nChannel < plugIn.Channels(); ++nChannel) {
        inputs[nChannel] = static_cast<float const*>(ports[portFirstAudio + 2 * nChannel]);
        outputs[nChannel] = static_cast<float*>(ports[portFirstAudio + 2 * nChannel + 1]);
    }
    plugIn.Run(inputs, outputs, nFrom, nTo - nFrom);
}

void CLv2PlugIn::Run(std::uint32_t nFrames) {
    const double dBegin = WorkedSeconds();
    plugIn.Begin(Controls());
    std::uint32_t nDone = 0;
    auto const* events = static_cast<LV2_Atom_Sequence const*>(ports[portControl]);
    if (events == nullptr) plugIn.CountByItself();
    if (events != nullptr && names.timePosition != 0) {
        LV2_ATOM_SEQUENCE_FOREACH(events, event) {
            if (event->body.type == names.windowOrder && event->body.size == sizeof(CWindowOrder)) {
                CWindowOrder order;
                std::memcpy(static_cast<void*>(&order), &event->body + 1, sizeof(order));
                plugIn.PutOrder(order);
            }
            if (event->body.type != names.atomObject) continue;
            auto const& object = reinterpret_cast<LV2_Atom_Object const&>(event->body);
            if (object.body.otype != names.timePosition) continue;
            const std::int64_t lAt = std::clamp<std::int64_t>(event->time.frames, nDone, nFrames);
            RunChannels(nDone, static_cast<std::uint32_t>(lAt));
            nDone = static_cast<std::uint32_t>(lAt);
            Follow(object);
        }
    }
    RunChannels(nDone, nFrames);

    SendMessages();
    Show(portResult, static_cast<float>(plugIn.Result()));
    const double dCycle = static_cast<double>(nFrames) / plugIn.SampleRate();
    const double dWorked = WorkedSeconds() - dBegin;
    if (nFrames > 0) m_Load = std::max(m_Load, static_cast<float>(100 * dWorked / dCycle));
    Show(portLoad, m_Load);
}

void CLv2PlugIn::SendMessage(CPlugInMessage const& message) {
    const auto nLength = static_cast<std::uint32_t>(std::strlen(message.szText));
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_frame_time(&m_Forge, 0);
    lv2_atom_forge_object(&m_Forge, &object, 0, names.patchSet);
    lv2_atom_forge_key(&m_Forge, names.patchProperty);
    lv2_atom_forge_urid(&m_Forge, names.message);
    lv2_atom_forge_key(&m_Forge, names.patchValue);
    lv2_atom_forge_string(&m_Forge, message.szText, nLength);
    lv2_atom_forge_pop(&m_Forge, &object);
}

void CLv2PlugIn::SendMessages() {
    auto* events = static_cast<LV2_Atom_Sequence*>(ports[portNotify]);
    if (events == nullptr || names.patchSet == 0) return;
    // One message and one note fit into the smallest buffer that the port asks for.
    lv2_atom_forge_set_buffer(&m_Forge, reinterpret_cast<std::uint8_t*>(events), events->atom.size);
    LV2_Atom_Forge_Frame sequence;
    if (lv2_atom_forge_sequence_head(&m_Forge, &sequence, 0) == 0) return;
    if (CPlugInMessage const* message = plugIn.Message()) {
        SendMessage(*message);
        plugIn.DropMessage();
    }
    if (CWindowNote const* note = plugIn.Note()) {
        lv2_atom_forge_frame_time(&m_Forge, 0);
        lv2_atom_forge_atom(&m_Forge, sizeof(*note), names.windowNote);
        lv2_atom_forge_write(&m_Forge, note, sizeof(*note));
        plugIn.DropNote();
    }
    lv2_atom_forge_pop(&m_Forge, &sequence);
}

/// The functions that a workstation calls.
struct CLv2Entry {
    static LV2_Handle Instantiate(LV2_Descriptor const* descriptor, double dSampleRate,
                                  char const* /*bundle*/, LV2_Feature const* const* features) {
        LV2_URID_Map* map = nullptr;
        for (auto feature = features; feature != nullptr && *feature != nullptr; ++feature) {
            if (std::strcmp((*feature)->URI, LV2_URID__map) == 0) {
                map = static_cast<LV2_URID_Map*>((*feature)->data);
            }
        }
        try {
            CPlugInVariant const* variant =
                std::find_if(std::begin(kPlugInVariants), std::end(kPlugInVariants),
                             [descriptor](CPlugInVariant const& candidate) {
                                 return std::strcmp(candidate.szUri, descriptor->URI) == 0;
                             });
            return static_cast<CPlugInHandle*>(
                new CLv2PlugIn(*variant, static_cast<int>(std::lround(dSampleRate)), map));
        } catch (std::exception const&) {
            return nullptr;
        }
    }

    static CLv2PlugIn& Instance(LV2_Handle instance) {
        return static_cast<CLv2PlugIn&>(*static_cast<CPlugInHandle*>(instance));
    }

    static void ConnectPort(LV2_Handle instance, std::uint32_t nPort, void* data) {
        if (nPort < CLv2PlugIn::kMostPorts) Instance(instance).ports[nPort] = data;
    }

    static void Activate(LV2_Handle instance) { Instance(instance).m_Load = 0; }
    static void Run(LV2_Handle instance, std::uint32_t nFrames) { Instance(instance).Run(nFrames); }
    static void Deactivate(LV2_Handle instance) { Instance(instance).plugIn.Stop(); }
    static void Cleanup(LV2_Handle instance) { delete &Instance(instance); }

    static void const* ExtensionData(char const* szUri) {
        return std::strcmp(szUri, LV2_STATE__interface) == 0 ? &kStateInterface : nullptr;
    }
};

LV2_SYMBOL_EXPORT LV2_Descriptor const* lv2_descriptor(std::uint32_t nIndex) {
    static const auto kDescriptors = [] {
        std::array<LV2_Descriptor, std::size(kPlugInVariants)> descriptors{};
        std::transform(std::begin(kPlugInVariants), std::end(kPlugInVariants), descriptors.begin(),
                       [](CPlugInVariant const& variant) {
                           return LV2_Descriptor{variant.szUri,          CLv2Entry::Instantiate,
                                                 CLv2Entry::ConnectPort, CLv2Entry::Activate,
                                                 CLv2Entry::Run,         CLv2Entry::Deactivate,
                                                 CLv2Entry::Cleanup,     CLv2Entry::ExtensionData};
                       });
        return descriptors;
    }();
    return nIndex < kDescriptors.size() ? &kDescriptors[nIndex] : nullptr;
}
