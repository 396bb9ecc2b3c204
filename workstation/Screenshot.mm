#import "workstation/Screenshot.h"

bool WriteScreenshot(NSView* view, std::string const& strFile) {
    [view display];
    [view lockFocus];
    NSBitmapImageRep* image = [[NSBitmapImageRep alloc] initWithFocusedViewRect:[view bounds]];
    [view unlockFocus];
    NSData* png = [image representationUsingType:NSPNGFileType
                                      properties:[NSDictionary dictionary]];
    const bool fWritten = [png writeToFile:[NSString stringWithUTF8String:strFile.c_str()]
                                atomically:NO];
    [image release];
    return fWritten;
}
