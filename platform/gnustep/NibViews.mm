// What stands for a view of a class of the project's own while a nib is read keeps the name of that
// class; GNUstep 0.29 never lets go of it. Here it does.

#import <GNUstepGUI/GSNibLoading.h>

@interface NSCustomView (TavarinNibViews)
@end

@implementation NSCustomView (TavarinNibViews)

- (void)dealloc {
    [_className release];
    [_extension release];
    [super dealloc];
}

@end
