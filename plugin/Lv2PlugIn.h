#pragma once

#include <lv2/atom/forge.h>
#include <lv2/core/lv2.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include <array>
#include <string>

#include "plugin/PlugIn.h"

/// The numbers that a workstation has for the names that are used here; all 0 when it gives none.
struct CLv2Names {
    LV2_URID atomChunk = 0;
    LV2_URID atomDouble = 0;
    LV2_URID atomFloat = 0;
    LV2_URID atomLong = 0;
    LV2_URID atomObject = 0;
    LV2_URID atomString = 0;
    LV2_URID atomURID = 0;
    LV2_URID patchProperty = 0;
    LV2_URID patchSet = 0;
    LV2_URID patchValue = 0;
    LV2_URID timeFrame = 0;
    LV2_URID timePosition = 0;
    LV2_URID timeSpeed = 0;
    LV2_URID message = 0;
    LV2_URID session = 0;
    LV2_URID unread = 0;
    LV2_URID windowNote = 0;
    LV2_URID windowOrder = 0;

    explicit CLv2Names(LV2_URID_Map const* map);
};

/// One instance of a plug-in in a workstation.
struct CLv2PlugIn : CPlugInHandle {
    CLv2PlugIn(CPlugInVariant const& variant, int nSampleRate, LV2_URID_Map* map);

    void Run(std::uint32_t nFrames);

    static constexpr std::size_t kMostPorts = portFirstAudio + 4;

    CLv2Names names;
    CPlugIn plugIn;
    std::array<void*, kMostPorts> ports{};

    std::string strUnread;  ///< a state that could not be read: it is saved again as it was

private:
    CPlugInControls Controls() const;
    float Control(PlugInPort port) const;
    void Show(PlugInPort port, float value);
    void SendMessages();
    void SendMessage(CPlugInMessage const& message);
    void Follow(LV2_Atom_Object const& position);
    void RunChannels(std::uint32_t nFrom, std::uint32_t nTo);

    LV2_Atom_Forge m_Forge{};
    float m_Load = 0;

    friend struct CLv2Entry;
};

/// Saving and loading the state of instances.
extern const LV2_State_Interface kStateInterface;
