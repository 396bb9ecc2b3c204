#pragma once

#include <dlfcn.h>
#include <lv2/atom/forge.h>
#include <lv2/core/lv2.h>
#include <lv2/state/state.h>
#include <lv2/time/time.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "plugin/PlugInTable.h"

/// A workstation in small: loads the module as workstations do, from its file, and runs one
/// plug-in.
class CPlugInHost {
public:
    static constexpr std::uint32_t kMostFrames = 8192;

    CPlugInHost(char const* szModule, std::string const& strUri, double dRate = 48000,
                bool fFeatures = true)
        : m_pModule(dlopen(szModule, RTLD_NOW | RTLD_LOCAL)) {
        if (m_pModule == nullptr) throw std::runtime_error(dlerror());
        auto* const find =
            reinterpret_cast<LV2_Descriptor_Function>(dlsym(m_pModule, "lv2_descriptor"));
        for (std::uint32_t nIndex = 0; (m_pDescriptor = find(nIndex)) != nullptr; ++nIndex) {
            if (strUri == m_pDescriptor->URI) break;
        }
        if (m_pDescriptor == nullptr) throw std::runtime_error("no plug-in " + strUri);
        m_Map = {this, Map};
        m_MapFeature = {LV2_URID__map, &m_Map};
        std::array<LV2_Feature const*, 2> features{fFeatures ? &m_MapFeature : nullptr, nullptr};
        m_Handle = m_pDescriptor->instantiate(m_pDescriptor, dRate, "", features.data());
        if (m_Handle == nullptr) throw std::runtime_error("no instance of " + strUri);
        lv2_atom_forge_init(&m_Forge, &m_Map);
        for (std::uint32_t nPort = portCapture; nPort < portFirstAudio; ++nPort) {
            m_pDescriptor->connect_port(m_Handle, nPort, &controls[nPort]);
        }
        m_pDescriptor->connect_port(m_Handle, portControl, m_Events.data());
        m_pDescriptor->connect_port(m_Handle, portNotify, m_Notes.data());
        for (std::uint32_t nChannel = 0; nChannel < 2; ++nChannel) {
            inputs[nChannel].resize(kMostFrames);
            outputs[nChannel].resize(kMostFrames);
            Connect(nChannel, inputs[nChannel].data(), outputs[nChannel].data());
        }
        ClearEvents();
    }

    ~CPlugInHost() {
        if (m_fActive) Deactivate();
        if (m_Handle != nullptr) m_pDescriptor->cleanup(m_Handle);
        dlclose(m_pModule);
    }
    CPlugInHost(CPlugInHost const&) = delete;
    CPlugInHost& operator=(CPlugInHost const&) = delete;

    LV2_Handle Handle() const { return m_Handle; }

    void Connect(std::uint32_t nChannel, float* in, float* out) {
        m_pDescriptor->connect_port(m_Handle, portFirstAudio + 2 * nChannel, in);
        m_pDescriptor->connect_port(m_Handle, portFirstAudio + 2 * nChannel + 1, out);
    }

    void Activate() {
        m_pDescriptor->activate(m_Handle);
        m_fActive = true;
    }
    void Deactivate() {
        m_pDescriptor->deactivate(m_Handle);
        m_fActive = false;
    }

    /// The transport is at a position from this frame of the next cycle on.
    void SetTransport(std::int64_t lFrame, std::int64_t lPosition, float speed) {
        LV2_Atom_Forge_Frame object;
        lv2_atom_forge_frame_time(&m_Forge, lFrame);
        lv2_atom_forge_object(&m_Forge, &object, 0, Number(LV2_TIME__Position));
        lv2_atom_forge_key(&m_Forge, Number(LV2_TIME__frame));
        lv2_atom_forge_long(&m_Forge, lPosition);
        lv2_atom_forge_key(&m_Forge, Number(LV2_TIME__speed));
        lv2_atom_forge_float(&m_Forge, speed);
        lv2_atom_forge_pop(&m_Forge, &object);
    }

    /// A message to the plug-in at the beginning of the next cycle.
    void Send(LV2_Atom const* message) {
        lv2_atom_forge_frame_time(&m_Forge, 0);
        lv2_atom_forge_raw(&m_Forge, message, sizeof(*message) + message->size);
        lv2_atom_forge_pad(&m_Forge, message->size);
    }

    LV2_URID_Map* Map() { return &m_Map; }

    /// Runs the inputs through the plug-in.
    void Run(std::uint32_t nFrames) {
        lv2_atom_forge_pop(&m_Forge, &m_Sequence);
        auto* notes = reinterpret_cast<LV2_Atom_Sequence*>(m_Notes.data());
        notes->atom.size = static_cast<std::uint32_t>(m_Notes.size() * sizeof(m_Notes[0]));
        notes->atom.type = 0;
        m_pDescriptor->run(m_Handle, nFrames);
        ClearEvents();
    }

    LV2_Atom_Sequence const& Notes() const {
        return *reinterpret_cast<LV2_Atom_Sequence const*>(m_Notes.data());
    }

    LV2_URID Number(std::string const& strName) {
        return m_Numbers.try_emplace(strName, m_Numbers.size() + 1).first->second;
    }

    /// \name State
    /// @{
    using CProperties = std::map<LV2_URID, std::string>;

    LV2_State_Status Save(CProperties* properties) {
        return State().save(
            m_Handle,
            [](LV2_State_Handle handle, std::uint32_t key, void const* value, std::size_t size,
               std::uint32_t, std::uint32_t) {
                (*static_cast<CProperties*>(handle))[key] =
                    std::string(static_cast<char const*>(value), size);
                return LV2_STATE_SUCCESS;
            },
            properties, 0, nullptr);
    }

    LV2_State_Status Restore(CProperties const& properties) {
        return State().restore(
            m_Handle,
            [](LV2_State_Handle handle, std::uint32_t key, std::size_t* size, std::uint32_t*,
               std::uint32_t*) -> void const* {
                auto const& known = *static_cast<CProperties const*>(handle);
                auto const found = known.find(key);
                if (found == known.end()) return nullptr;
                *size = found->second.size();
                return found->second.data();
            },
            const_cast<CProperties*>(&properties), 0, nullptr);
    }
    /// @}

    std::array<float, portFirstAudio> controls{};
    std::array<std::vector<float>, 2> inputs;
    std::array<std::vector<float>, 2> outputs;

private:
    static LV2_URID Map(LV2_URID_Map_Handle host, char const* szName) {
        return static_cast<CPlugInHost*>(host)->Number(szName);
    }

    void ClearEvents() {
        lv2_atom_forge_set_buffer(&m_Forge, reinterpret_cast<std::uint8_t*>(m_Events.data()),
                                  m_Events.size() * sizeof(m_Events[0]));
        lv2_atom_forge_sequence_head(&m_Forge, &m_Sequence, 0);
    }

    LV2_State_Interface const& State() const {
        return *static_cast<LV2_State_Interface const*>(
            m_pDescriptor->extension_data(LV2_STATE__interface));
    }

    void* m_pModule;
    LV2_Descriptor const* m_pDescriptor = nullptr;
    LV2_Handle m_Handle = nullptr;
    bool m_fActive = false;
    std::map<std::string, LV2_URID> m_Numbers;
    LV2_URID_Map m_Map{};
    LV2_Feature m_MapFeature{};
    LV2_Atom_Forge m_Forge{};
    LV2_Atom_Forge_Frame m_Sequence{};
    std::array<std::uint64_t, 512> m_Events{};
    std::array<std::uint64_t, 512> m_Notes{};
};
