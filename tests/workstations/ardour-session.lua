-- Makes a session with a mono track for each plug-in, the plug-in on it; the audio comes from ardour.sh.
local directory = arg[1]
local tracks = {
    { "Voice1", "urn:tavarin:pro:link" },
    { "Voice2", "urn:tavarin:pro:apt" },
    { "Voice3", "urn:tavarin:pro:doubler" },
}
AudioEngine:set_backend("None (Dummy)", "prepare", "")
local session = create_session(directory, "session", 48000)
assert(session)
sleep(1)
for _, entry in ipairs(tracks) do
    local track = session:new_audio_track(1, 1, nil, 1, entry[1],
        ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true):front()
    local plugin = ARDOUR.LuaAPI.new_plugin(session, entry[2], ARDOUR.PluginType.LV2, "")
    assert(not plugin:isnil(), entry[2])
    track:add_processor_by_index(plugin, 0, nil, true)
end
session:save_state("")
close_session()
quit()
