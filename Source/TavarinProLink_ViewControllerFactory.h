#pragma once

#import "Source/ViewControllerOperations.h"

@class TavarinProAPTLink_ViewController;
@class TavarinProDoublerLink_ViewController;
@class TavarinProLink_ViewController;

/// Where a plug-in gets its view: the bundle's principal class. To be used on the thread of the
/// user interface.
///
/// Each creation method makes a new controller, loaded from the nib of its kind in `bundle`, with
/// the plug-in's two pointers set. The caller owns it. A controller that cannot be made, for
/// instance because its nib is not in the bundle, stops the process.
@interface TavarinProLink_ViewControllerFactory : NSObject

/// Fills the process-wide colour scheme with the Designer palette. What was in it is gone.
- (id)init;

/// Makes a controller of the Link view.
- (TavarinProLink_ViewController*)LinkViewControllerFromBundle:(NSBundle*)bundle
                                              effectParameters:(AAX_IEffectParameters*)parameters
                                                    controller:(AAX_IController*)controller;

/// Makes a controller of the APT Link view.
- (TavarinProAPTLink_ViewController*)APTLinkViewControllerFromBundle:(NSBundle*)bundle
                                                    effectParameters:
                                                        (AAX_IEffectParameters*)parameters
                                                          controller:(AAX_IController*)controller;

/// Makes a controller of the Doubler Link view.
- (TavarinProDoublerLink_ViewController*)
    DoublerLinkViewControllerFromBundle:(NSBundle*)bundle
                       effectParameters:(AAX_IEffectParameters*)parameters
                             controller:(AAX_IController*)controller;

@end
