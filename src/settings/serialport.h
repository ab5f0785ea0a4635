// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// The serial port the phone is reached through, as the settings keep it and
// the user names it: on Windows a COM port, held as its number (COM3 is 3);
// elsewhere a device path such as /dev/rfcomm0. A port made empty, or a COM
// number below 1, is "not configured".
class SerialPort
{
public:
    SerialPort() = default;
    // Windows: the port COMn.
    static SerialPort FromNumber(int number);

    // What the user chose or typed. On Windows "COM3", "com3" and "3" are all
    // COM3 (every "COM" is dropped and the rest must be a number); elsewhere
    // the text is the device path as it stands. std::nullopt when the text
    // names no port at all ("" anywhere, "abc" on Windows).
    static std::optional<SerialPort> Parse(const QString &text);

    [[nodiscard]] bool IsSet() const { return !Name().isEmpty(); }
    // The name shown to the user and opened: "COM3" or "/dev/rfcomm0"; ""
    // when not configured.
    [[nodiscard]] QString Name() const;
    // Windows: the n of COMn; 0 elsewhere.
    [[nodiscard]] int Number() const { return m_number; }

    bool operator==(const SerialPort &) const = default;

private:
    int m_number = 0;
    QString m_path;
};
