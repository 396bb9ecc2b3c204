#import "Source/TextFitting.h"

#include <algorithm>

namespace {

constexpr CGFloat kTallest = 100000;
// Less than a character takes, so that what cannot fit is not measured.
constexpr CGFloat kLeastArea = 20;

NSString* Beginning(NSString* text, NSUInteger nLength) {
    const NSRange last = [text rangeOfComposedCharacterSequenceAtIndex:nLength];
    return [[text substringToIndex:last.location] stringByAppendingString:@"\u2026"];
}

}  // namespace

CGFloat TextHeight(NSString* text, NSDictionary* attributes, CGFloat width) {
    if ([text length] == 0) return 0;
    const NSRect bounds = [text boundingRectWithSize:NSMakeSize(width, kTallest)
                                             options:NSStringDrawingUsesLineFragmentOrigin
                                          attributes:attributes];
    return ceil(bounds.size.height);
}

NSString* FittingText(NSString* text, NSDictionary* attributes, NSSize room) {
    const CGFloat height = std::max(room.height, TextHeight(@"X", attributes, kTallest));
    const auto nMost = static_cast<NSUInteger>(room.width * height / kLeastArea);
    if ([text length] <= nMost && TextHeight(text, attributes, room.width) <= height) return text;
    NSUInteger nFits = 0;
    NSUInteger nTooLong = std::min([text length], nMost);
    while (nTooLong - nFits > 1) {
        const NSUInteger nTried = nFits + (nTooLong - nFits) / 2;
        const bool fFits = TextHeight(Beginning(text, nTried), attributes, room.width) <= height;
        (fFits ? nFits : nTooLong) = nTried;
    }
    return Beginning(text, nFits);
}
