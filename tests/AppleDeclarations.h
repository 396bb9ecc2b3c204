// What the sources use of Apple's API and GNUstep's headers do not declare, as Apple's
// documentation has it. For tests/apple-api alone; nothing is built with it.
#import <AppKit/AppKit.h>

@interface NSApplication (AppleDeclarations)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
@end

@interface NSFileManager (AppleDeclarations)
- (BOOL)setAttributes:(NSDictionary*)attributes ofItemAtPath:(NSString*)path error:(NSError**)error;
@end

@interface NSBundle (AppleDeclarations)
- (NSImage*)imageForResource:(NSString*)name;
@end

extern NSString* const NSFileBusy;

// Names that Apple has replaced and GNUstep knows the successors of.
#pragma clang poison NSBorderlessWindowMask NSTitledWindowMask NSClosableWindowMask
#pragma clang poison NSMiniaturizableWindowMask NSResizableWindowMask
#pragma clang poison NSLeftTextAlignment NSRightTextAlignment NSCenterTextAlignment
#pragma clang poison NSMiniControlSize NSSmallControlSize NSRegularControlSize
#pragma clang poison NSOKButton NSCancelButton NSOnState NSOffState NSMixedState
