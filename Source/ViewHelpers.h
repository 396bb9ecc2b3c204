#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>
#include <string>

#include "Source/Notifications.h"
#include "link/TANClientInterProcess.h"

/// \file
/// What the three view controllers have in common. Everything here belongs to the thread of the
/// user interface.

/// A text that came from the host. What is not UTF-8 is taken as Latin 1, so that nothing the host
/// says is lost. Not owned by the caller.
NSString* TextFromHost(std::string const& strText);

/// The advice and then the error, each into its field; a field's tooltip repeats its text. Where
/// the fields are and how they share their room is the nib's business.
void ShowTexts(CTANClientInterProcess const& script, NSTextField* textLastError,
               NSTextField* textAdvice);

/// The same. When there is nothing to say the fields hide and the logo shows.
void ShowTextsOrLogo(CTANClientInterProcess const& script, NSTextField* textLastError,
                     NSTextField* textAdvice, NSImageView* imageLogo);

/// A control that may live longer than the controller behind it calls nobody from now on.
void LetGo(NSControl* control);

/// Reads the current host again; true when it is not `*pnCurrentHost`, which then follows.
bool HasHostChanged(CTANClientInterProcess& script, std::int32_t* pnCurrentHost);

/// Stops the process, naming the condition, when a record has not the size of its kind or is
/// missing. A print may have any size; nothing is said about unknown ids.
void RequireRecord(std::int32_t iNotificationType, void const* pNotificationData,
                   std::uint32_t iNotificationDataSize);

/// Whether a capture's path ends within its field. A capture for which it does not has no file to
/// hand over; the client's texts say so.
bool HasPath(CTANClientInterProcess& script, paramPostAnalyze const& capture);

/// Hands a capture over to a track of the host. A duplicate is deleted from disk instead; then the
/// result is false.
bool HandOverCapture(CTANClientInterProcess& script, bool fAudioSuite, int nTrack,
                     paramPostAnalyze const& capture);

/// The start and end of a capture on the timeline, truncated toward zero; out of range, the nearest
/// 64-bit limit.
std::int64_t CaptureStart(paramPostAnalyze const& capture);
std::int64_t CaptureEnd(paramPostAnalyze const& capture);

/// What became of a notification.
enum class Answer {
    Silent,    ///< the texts are as they were
    Answered,  ///< the texts are worth showing again
    Refused,   ///< the record could not take the answer; the texts, which say so, have to be shown
};

/// Carries out the notifications that all views treat alike, everything but captures, and writes
/// the answers into their records. An exported file whose path does not fit is removed.
Answer AnswerNotification(CTANClientInterProcess& script, bool fAudioSuite,
                          std::int32_t iNotificationType, void const* pNotificationData);
