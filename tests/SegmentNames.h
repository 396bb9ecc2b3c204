#pragma once

/// Makes this process the only test program that uses the link's fixed segment names: waits until
/// no other has them, and keeps them until the process ends. False when a live host application has
/// them, which no test may touch.
bool ClaimSegmentNames();
