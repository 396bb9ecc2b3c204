// What overrides awakeFromNib calls it for its superclass too: macOS demands that. GNUstep has no
// such method to call.

#import <AppKit/AppKit.h>

@interface NSResponder (TavarinNibAwaking)
- (void)awakeFromNib;
@end

@implementation NSResponder (TavarinNibAwaking)

- (void)awakeFromNib {
}

@end
