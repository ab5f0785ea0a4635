// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings/languagetext.h"

// The texts of sending over Bluetooth beyond those it shares with the serial
// line (PhoneText): the connecting and sending steps and the reasons it fails,
// each saying what to do, in enum order.
enum class BluetoothText {
    Connecting,
    Sending,
    PhoneNotSet,
    BadName,
    ServiceMissing,
    Unreachable,
    Refused,
    TimedOut,
    TransferDropped, // the second line of PutFailed
    Count
};

inline constexpr auto BluetoothTexts = UiTextTable<BluetoothText>({
    {BluetoothText::Connecting, u"FileuploadWindow", u"StatusConnecting", u"Connecting to %d ..."},
    {BluetoothText::Sending, u"FileuploadWindow", u"StatusSending", u"Sending %f - %b of %t Bytes (%r KB/s) ..."},
    {BluetoothText::PhoneNotSet, u"Errors", u"BluetoothNotSet",
     u"No Bluetooth phone is chosen. Please check the settings !"},
    {BluetoothText::BadName, u"Errors", u"BadRemoteName", u"\"%f\" cannot be a file name on the phone."},
    {BluetoothText::ServiceMissing, u"Errors", u"ObexServiceMissing",
     u"The Bluetooth file service (obexd) is not running.%nInstall the package bluez-obexd, then log out and in "
     u"again (or start /usr/libexec/bluetooth/obexd)."},
    {BluetoothText::Unreachable, u"Errors", u"PhoneUnreachable",
     u"The phone %d could not be reached.%nSwitch Bluetooth on on the phone, bring it within range and check that "
     u"it is paired with this computer."},
    {BluetoothText::Refused, u"Errors", u"PhoneRefused",
     u"The phone %d did not take the profile.%nAccept the transfer on the phone when it asks and keep the phone "
     u"within range, then send it again."},
    {BluetoothText::TimedOut, u"Errors", u"PhoneTimedOut",
     u"The phone %d did not answer in time.%nCheck that it is switched on and within range, then try again."},
    {BluetoothText::TransferDropped, u"Errors", u"TransferDropped",
     u"the Bluetooth file service dropped the transfer"},
});

inline QString LanguageText(BluetoothText text)
{
    return LanguageText(BluetoothTexts[static_cast<std::size_t>(text)]);
}
