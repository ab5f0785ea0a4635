// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings/languagetext.h"

// The texts of sending a profile: the upload window's caption and steps, and
// the reasons an upload fails, in enum order.
enum class PhoneText {
    UploadCaption,
    Generating,
    Opening,
    Initiating,
    Sending,
    Sent,
    UploadFailedStatus,
    CouldNotConnect,
    PortNotSet,
    NameTooLong,
    PortInUse,
    PortHeld,
    PortLeftLocked,
    PhoneSilent,
    // One key, two built-in texts: a language file's key 10 replaces both.
    ObexNotStarted,
    ObexNotConnected,
    PutFailed,
    Count
};

inline constexpr auto PhoneTexts = UiTextTable<PhoneText>({
    {PhoneText::UploadCaption, u"FileuploadWindow", u"Caption", u"Fileupload"},
    {PhoneText::Generating, u"FileuploadWindow", u"Status1", u"Generating File..."},
    {PhoneText::Opening, u"FileuploadWindow", u"Status2", u"Opening COM%p ..."},
    {PhoneText::Initiating, u"FileuploadWindow", u"Status3", u"Initiating Obex Filetransfer..."},
    {PhoneText::Sending, u"FileuploadWindow", u"Status4", u"Sending %f  - %t Bytes..."},
    {PhoneText::Sent, u"FileuploadWindow", u"Status5", u"%f (%t KB) successfully transfered to phone !"},
    {PhoneText::UploadFailedStatus, u"FileuploadWindow", u"Status6", u"Fileupload failed !"},
    {PhoneText::CouldNotConnect, u"Errors", u"9", u"Couldn't connect to COM%p !"},
    {PhoneText::PortNotSet, u"Errors", u"14", u"The COM-Port is not set. Please check the settings !"},
    {PhoneText::NameTooLong, u"Errors", u"NameTooLong",
     u"The name for the phone is too long: it may have at most %m characters."},
    {PhoneText::PortInUse, u"Errors", u"PortInUse",
     u"COM%p is in use by another program, or you may not open it (on Linux the user must be in the group "
     u"dialout)."},
    {PhoneText::PortHeld, u"Errors", u"PortHeld",
     u"COM%p is open in another program (%a, process %i). Let it close the port or end it, then try once more."},
    {PhoneText::PortLeftLocked, u"Errors", u"PortLeftLocked",
     u"COM%p is locked, yet no program of yours has it open: one that was ended without closing it left it so. "
     u"Reconnect the phone or cable (Bluetooth: rfcomm release, then bind)."},
    {PhoneText::PhoneSilent, u"Errors", u"15",
     u"The phone didn't answer.%nPleas check the settings or try it once more."},
    {PhoneText::ObexNotStarted, u"Errors", u"10", u"Initiating Obex-Protocol failed !"},
    {PhoneText::ObexNotConnected, u"Errors", u"10", u"Initializing Obex-Protocol failed !"},
    {PhoneText::PutFailed, u"Errors", u"11", u"Fileupload failed !"},
});

inline QString LanguageText(PhoneText text)
{
    return LanguageText(PhoneTexts[static_cast<std::size_t>(text)]);
}
