#import "workstation/GalleryWindow.h"

#include <cstdio>
#include <stdexcept>

namespace {

NSView* LoadGallery(std::string const& strPath) {
    NSBundle* bundle = [NSBundle bundleWithPath:[NSString stringWithUTF8String:strPath.c_str()]];
    NSView* gallery = [[[[bundle principalClass] alloc] init] autorelease];
    if (gallery == nil) throw std::runtime_error(strPath + " is no gallery that loads");
    return gallery;
}

}  // namespace

/// What the gallery's own view has besides; its class is in the bundle.
@protocol TavarinWorkstation_SchemeGallery
- (void)UseScheme:(NSData*)image named:(NSString*)name;
@end

@implementation TavarinWorkstation_GalleryWindow

- (id)initWithArguments:(CArguments const&)arguments {
    self = [super initWithArguments:arguments];
    if (self == nil) return nil;
    NSView* gallery = LoadGallery(arguments.strGallery);
    const NSRect frame = [gallery frame];
    m_window = [[NSWindow alloc]
        initWithContentRect:NSMakeRect(40, 60, frame.size.width, frame.size.height)
                  styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                            NSWindowStyleMaskMiniaturizable
                    backing:NSBackingStoreBuffered
                      defer:NO];
    [m_window setReleasedWhenClosed:NO];
    [m_window setTitle:@"Tavarin controls"];
    [m_window setContentView:gallery];
    [self UseScheme];
    return self;
}

- (void)ShowScheme:(NSData*)image named:(NSString*)name {
    id gallery = [m_window contentView];
    [(id<TavarinWorkstation_SchemeGallery>)gallery UseScheme:image named:name];
}

- (void)Tell:(std::string const&)strLine {
    std::printf("%s\n", strLine.c_str());
    std::fflush(stdout);
}

- (void)dealloc {
    [m_window release];
    [super dealloc];
}

- (void)Start {
    [m_window makeKeyAndOrderFront:nil];
    [super Start];
}

- (void)Finish {
    [super Finish];
    [m_window orderOut:nil];
}

- (BOOL)Take:(CStep const&)step {
    const bool fPicture = step.kind == StepKind::Screenshot || step.kind == StepKind::Picture;
    if (fPicture) return [self WritePictureOf:[m_window contentView] to:step.strText];
    [self Tell:"the step failed: a gallery has no plug-in to take it"];
    return NO;
}

@end
