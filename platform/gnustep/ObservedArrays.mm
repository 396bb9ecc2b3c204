// A pop-up that is bound to the names in an array controller asks the controller's array for the
// value of a key whenever the content changes. GNUstep 0.29 never lets go of the array it answers.
// Here is the same answer, without the leak.

#import <Foundation/Foundation.h>

/// AppKit's own class for what an array controller arranges; in no header.
@interface GSObservableArray : NSArray
@end

@interface GSObservableArray (TavarinObservedArrays)
@end

@implementation GSObservableArray (TavarinObservedArrays)

- (id)valueForKey:(NSString*)key {
    if ([key hasPrefix:@"@"]) return [super valueForKey:key];
    NSMutableArray* values = [NSMutableArray arrayWithCapacity:[self count]];
    for (NSUInteger index = 0; index < [self count]; ++index) {
        id value = [[self objectAtIndex:index] valueForKey:key];
        [values addObject:value == nil ? [NSNull null] : value];
    }
    return [[[GSObservableArray alloc] initWithArray:values] autorelease];
}

@end
