#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>

/// \file
/// What a plug-in and its workstation can ask of every view controller.

class AAX_IController;
class AAX_IEffectParameters;
class AAX_IViewContainer;

/// The operations that all three view controllers have. Each belongs to the thread of the user
/// interface and may block it as long as the link client does.
@protocol TavarinProLink_ViewControllerOperations

/// Keeps the plug-in's parameters; they are not owned and never called.
- (void)SetParameters:(AAX_IEffectParameters*)parameters;

/// Keeps the plug-in's controller; it is not owned and never called.
- (void)SetController:(AAX_IController*)controller;

/// Does nothing.
- (void)SetViewContainerOnViews:(AAX_IViewContainer*)container;

/// Does nothing.
- (void)SetEffectParametersOnViews:(AAX_IEffectParameters*)parameters;

/// Reacts to one of the notifications of Notifications.h and writes the answer into its record. A
/// record of the wrong size stops the process; an unknown id changes nothing. Always 0.
- (int32_t)NotificationReceived:(int32_t)iNotificationType
                           Data:(void const*)pNotificationData
                       DataSize:(uint32_t)iNotificationDataSize;

/// Looks which host is current and shows the texts anew when it is another one than last time. For
/// the plug-in to call every now and then; the view never does.
- (void)CheckHost;

/// Shows the link client's error and advice.
- (void)SetTextFields;

@end
