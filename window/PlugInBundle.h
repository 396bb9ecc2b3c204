#pragma once

#import <AppKit/AppKit.h>

#import "Source/ViewControllerOperations.h"
#import "Source/WindowOperations.h"
#include "plugin/PlugInTable.h"

/// A controller of any kind.
typedef NSViewController<TavarinProLink_ViewControllerOperations, TavarinProLink_WindowOperations>
    CPlugInController;

/// The bundle with the views. It stands beside this module, wherever that was installed. All
/// plug-ins of a process share one, with one factory: a class of one name can be there only once.
class CPlugInBundle {
public:
    /// The bundle, loaded when it is first wanted. Throws `std::runtime_error` with a sentence for
    /// the user when it is not there or does not load.
    static CPlugInBundle& Shared();

    /// A new controller; the caller owns it.
    CPlugInController* MakeController(PlugInKind kind) const;

    /// The bundle's class of that name; null when it has none.
    Class ClassNamed(NSString* name) const { return [m_bundle classNamed:name]; }

    /// The bundle's image of that name; null when it has none.
    NSBitmapImageRep* ImageNamed(NSString* name) const;

    CPlugInBundle(CPlugInBundle const&) = delete;
    CPlugInBundle& operator=(CPlugInBundle const&) = delete;

private:
    CPlugInBundle();
    ~CPlugInBundle() = default;

    NSBundle* m_bundle = nil;
    id m_factory = nil;
};
