#import "Source/WindowOperations.h"

#import "Source/TavarinProAPTLink_ViewController.h"
#import "Source/TavarinProDoublerLink_ViewController.h"
#import "Source/TavarinProLink_ViewController.h"

namespace {

void PutError(CTANClientInterProcess& script, char const* szText) {
    script.m_strLastError = szText;
    script.m_strAdvice.clear();
}

}  // namespace

@interface TavarinProLink_ViewController (Window) <TavarinProLink_WindowOperations>
@end

@implementation TavarinProLink_ViewController (Window)

- (int32_t)CurrentHost {
    return m_nCurrentHost;
}

- (char const*)LastError {
    return m_Script.m_strLastError.c_str();
}

- (void)ShowError:(char const*)text {
    PutError(m_Script, text);
    [self SetTextFields];
}

- (int32_t)ChosenTrack {
    if (m_nCurrentHost < 1) return -1;
    const auto nTrack = static_cast<int32_t>([m_TracksArray selectionIndex]);
    return nTrack < 0 ? -1 : nTrack;
}

- (void)ChooseTrack:(int32_t)track {
    const auto nTracks = static_cast<int32_t>([m_Tracks count]);
    if (track < nTracks) [m_TracksArray setSelectionIndex:track];
}

- (void)FetchTracks {
    [self FillTrackList:nil];
}

- (void const*)TrackList {
    return m_Tracks;
}

- (void)RememberTakeOnTrack:(int32_t)track Start:(int64_t)start End:(int64_t)end {
}

@end

@interface TavarinProAPTLink_ViewController (Window) <TavarinProLink_WindowOperations>
@end

@implementation TavarinProAPTLink_ViewController (Window)

- (int32_t)CurrentHost {
    return m_nCurrentHost;
}

- (char const*)LastError {
    return m_Script.m_strLastError.c_str();
}

- (void)ShowError:(char const*)text {
    PutError(m_Script, text);
    [self SetTextFields];
}

- (int32_t)ChosenTrack {
    return m_fGuideSelected ? 0 : 1;
}

- (void)ChooseTrack:(int32_t)track {
    m_fGuideSelected = track == 0;
    [self SetActiveTrack];
}

- (void)FetchTracks {
}

- (void const*)TrackList {
    return nil;
}

- (void)RememberTakeOnTrack:(int32_t)track Start:(int64_t)start End:(int64_t)end {
    (track == 0 ? m_lGuideStart : m_lDubStart) = start;
    (track == 0 ? m_lGuideEnd : m_lDubEnd) = end;
}

@end

@interface TavarinProDoublerLink_ViewController (Window) <TavarinProLink_WindowOperations>
@end

@implementation TavarinProDoublerLink_ViewController (Window)

- (int32_t)CurrentHost {
    return m_nCurrentHost;
}

- (char const*)LastError {
    return m_Script.m_strLastError.c_str();
}

- (void)ShowError:(char const*)text {
    PutError(m_Script, text);
    [self SetTextFields];
}

- (int32_t)ChosenTrack {
    return -1;
}

- (void)ChooseTrack:(int32_t)track {
}

- (void)FetchTracks {
}

- (void const*)TrackList {
    return nil;
}

- (void)RememberTakeOnTrack:(int32_t)track Start:(int64_t)start End:(int64_t)end {
    if (track != 0) return;
    m_lInputStart = start;
    m_lInputEnd = end;
}

@end
