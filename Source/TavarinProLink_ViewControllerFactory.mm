#import "Source/TavarinProLink_ViewControllerFactory.h"

#import "Source/TavarinProAPTLink_ViewController.h"
#import "Source/TavarinProDoublerLink_ViewController.h"
#import "Source/TavarinProLink_ViewController.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#import "controls/GraphicUtils.h"
#import "controls/QXButtonCell.h"
#import "controls/QXPopUpButtonCell.h"
#include "platform/Assertion.h"
#import "platform/BundleImage.h"

namespace {

// AppKit looks for a nib only when the view is first shown, in other places too. No bundle means
// those of AppKit's choice.
bool HasNib(NSBundle* bundle, NSString* nib) {
    return bundle == nil || [bundle pathForResource:nib ofType:@"nib"] != nil ||
           [bundle pathForResource:nib ofType:@"xib"] != nil;
}

// The first class of a name that a process loads is the only one: another module's drawing would
// take the place of the views' own.
void ReportForeignClasses() {
    NSBundle* own = [NSBundle bundleForClass:[TavarinProLink_ViewControllerFactory class]];
    for (Class drawing : {[GraphicUtils class], [QXButtonCell class], [QXPopUpButtonCell class]}) {
        NSBundle* bundle = [NSBundle bundleForClass:drawing];
        if (bundle == own) continue;
        NSLog(@"The class %@ is another one, from %@: the views may look wrong.",
              NSStringFromClass(drawing), [bundle bundlePath]);
    }
}

// Nibs find their images by name. Not every AppKit looks for a name in the bundle of the nib.
void NameImages(NSBundle* bundle) {
    for (NSString* name : {@"TavarinProLink_Logo", @"TavarinProLink_Mark"}) {
        if ([NSImage imageNamed:name] != nil) continue;
        // The name keeps the image: it lives as long as the process, once for all views.
        [MakeBundleImage(bundle, name) setName:name];
    }
}

template <typename Controller>
Controller* MakeController(Controller* viewController, NSString* nib, NSBundle* bundle,
                           AAX_IEffectParameters* parameters, AAX_IController* controller) {
    NameImages(bundle);
    viewController = HasNib(bundle, nib) ? [viewController initWithNibName:nib bundle:bundle] : nil;
    TAVARIN_REQUIRE(viewController != nil);
    [viewController SetParameters:parameters];
    [viewController SetController:controller];
    return viewController;
}

}  // namespace

@implementation TavarinProLink_ViewControllerFactory

+ (void)initialize {
    if (self == [TavarinProLink_ViewControllerFactory class]) ReportForeignClasses();
}

- (id)init {
    self = [super init];
    if (self != nil) AppCreateDefaultColoursDesigner(&gAppColours);
    return self;
}

- (TavarinProLink_ViewController*)LinkViewControllerFromBundle:(NSBundle*)bundle
                                              effectParameters:(AAX_IEffectParameters*)parameters
                                                    controller:(AAX_IController*)controller {
    return MakeController([TavarinProLink_ViewController alloc], @"TavarinProLink_View", bundle,
                          parameters, controller);
}

- (TavarinProAPTLink_ViewController*)APTLinkViewControllerFromBundle:(NSBundle*)bundle
                                                    effectParameters:
                                                        (AAX_IEffectParameters*)parameters
                                                          controller:(AAX_IController*)controller {
    return MakeController([TavarinProAPTLink_ViewController alloc], @"TavarinProAPTLink_View",
                          bundle, parameters, controller);
}

- (TavarinProDoublerLink_ViewController*)
    DoublerLinkViewControllerFromBundle:(NSBundle*)bundle
                       effectParameters:(AAX_IEffectParameters*)parameters
                             controller:(AAX_IController*)controller {
    return MakeController([TavarinProDoublerLink_ViewController alloc],
                          @"TavarinProDoublerLink_View", bundle, parameters, controller);
}

@end
