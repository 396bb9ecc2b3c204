-- Prints what the AudioSuite document holds: tracks and their regions. Run it with `tavarin link run`.
SelectAudioSuiteDocument()
for nTrack = 0, GetTrackCount() - 1 do
    local idTrack = GetTrackID(nTrack)
    print(string.format("  track %d  %s", nTrack, GetTrackName(idTrack, true)))
    for nRegion = 0, GetRegionCount(idTrack) - 1 do
        local idRegion = GetRegionID(idTrack, nRegion)
        local start, stop = GetRegionStartPosition(idRegion), GetRegionEndPosition(idRegion)
        local seconds = (stop - start) / GetSampleRate()
        print(string.format("           region from %d to %d (%.2f s)", start, stop, seconds))
    end
end
