// GNUstep decides which kind of .xib it has before it by parsing the whole file, and 0.29 never
// lets go of what it parsed: some hundred kilobytes for every view that is loaded. The same
// decision is made here, without the leak.

#import <Foundation/Foundation.h>
#import <GNUstepGUI/GSXibKeyedUnarchiver.h>

@interface GSXibKeyedUnarchiver (TavarinNibFormat)
@end

@implementation GSXibKeyedUnarchiver (TavarinNibFormat)

+ (BOOL)checkXib5:(NSData*)data {
    NSXMLDocument* document = [[NSXMLDocument alloc] initWithData:data options:0 error:NULL];
    const BOOL isNewFormat = [[[document rootElement] name] isEqual:@"document"];
    [document release];
    return isNewFormat;
}

@end
