#import "platform/EmbeddedWindow.h"

// No window of one program can be put into another's here, and none is asked for.
void EmbedWindow(NSWindow* /*window*/, std::uint64_t /*nParent*/) {}

void FollowParent(NSWindow* /*window*/) {}
