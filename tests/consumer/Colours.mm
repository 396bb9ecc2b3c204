// Includes every public header that needs AppKit, and loads the bundle that was installed.

#import <AppKit/AppKit.h>

#include <cstdio>

#import "Source/TavarinProAPTLink_ViewController.h"
#import "Source/TavarinProDoublerLink_ViewController.h"
#import "Source/TavarinProLink_ViewController.h"
#import "Source/TavarinProLink_ViewControllerFactory.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#ifdef WITH_CONTROLS
#import "controls/ColoredTextField.h"
#include "controls/GraphicUtils.h"
#import "controls/QXButtonCell.h"
#import "controls/QXPopUpButtonCell.h"
#endif

int main() {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    AppCreateDefaultColoursDesigner(&gAppColours);
    if (gAppColours.Find(ccPlayhead) == nullptr) return 1;
#ifdef WITH_CONTROLS
    if (NSClassFromString(@"QXButtonCell") == nil) return 2;
#endif
    NSBundle* bundle = [NSBundle bundleWithPath:[NSString stringWithUTF8String:BUNDLE]];
    const char* szClass = [NSStringFromClass([bundle principalClass]) UTF8String];
    std::printf("%zu colours, %s\n", gAppColours.Entries().size(), szClass ? szClass : "no class");
    const int nStatus = szClass ? 0 : 3;
    [pool release];
    return nStatus;
}
