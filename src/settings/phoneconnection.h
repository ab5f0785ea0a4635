// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// How the phone is reached: through a serial port (the AT commands and OBEX
// of the serial line), or as a paired Bluetooth phone through the system's
// OBEX service.
enum class PhoneConnection { Serial, Bluetooth };

// How a profile goes to a Bluetooth phone: Object Push (the phone stores the
// file under the name it is sent with) or an OBEX file-transfer put into the
// phone's current folder.
enum class ObexMethod { Push, FileTransfer };

// A paired Bluetooth phone as the settings keep it.
struct BluetoothPhone
{
    QString Address; // "00:11:22:33:44:55"; "" = none chosen
    QString Name; // the name the phone is shown by; may be ""
    ObexMethod Method = ObexMethod::Push;

    [[nodiscard]] bool IsSet() const { return !Address.isEmpty(); }
    // The name, or the address when the phone has none.
    [[nodiscard]] QString ShownName() const { return Name.isEmpty() ? Address : Name; }
};

// A Bluetooth device address as typed: six pairs of hexadecimal digits
// separated by colons (or dashes), in any case. Returns it in the form BlueZ
// uses ("00:1A:2B:3C:4D:5E"), std::nullopt for anything else.
std::optional<QString> ParseBluetoothAddress(const QString &text);

// "Push" and "FTP", the values the settings store and the console tool take;
// ParseObexMethod accepts them in any case, and "push" and "ftp".
QString ObexMethodName(ObexMethod method);
std::optional<ObexMethod> ParseObexMethod(const QString &text);
