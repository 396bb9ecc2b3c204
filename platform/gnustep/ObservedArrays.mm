// A pop-up that is bound to the names in an array controller asks the controller's array for the
// value of a key whenever the content changes. GNUstep 0.29 never lets go of the array it answers.
// Here is the same answer, without the leak.

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

namespace {

IMP g_valueOfArrayItself = nullptr;
Class g_observableArray = Nil;

id ValuesForKey(NSArray* array, SEL selector, NSString* key) {
    if ([key hasPrefix:@"@"]) {
        return reinterpret_cast<id (*)(id, SEL, NSString*)>(g_valueOfArrayItself)(array, selector,
                                                                                  key);
    }
    NSMutableArray* values = [NSMutableArray arrayWithCapacity:[array count]];
    for (NSUInteger index = 0; index < [array count]; ++index) {
        id value = [[array objectAtIndex:index] valueForKey:key];
        [values addObject:value == nil ? [NSNull null] : value];
    }
    return [[[g_observableArray alloc] initWithArray:values] autorelease];
}

}  // namespace

/// Puts the correction in place when its module is loaded.
@interface TavarinObservedArraysCorrection : NSObject
@end

@implementation TavarinObservedArraysCorrection

+ (void)load {
    g_observableArray = objc_lookUpClass("GSObservableArray");
    Method method = class_getInstanceMethod(g_observableArray, @selector(valueForKey:));
    if (method == nullptr) return;
    g_valueOfArrayItself = method_getImplementation(method);
    method_setImplementation(method, reinterpret_cast<IMP>(ValuesForKey));
}

@end
