// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "phoneconnection.h"
#include "serialport.h"

#include <QString>
#include <QVariant>

#include <memory>

class QSettings;

// The program's settings, read once at start-up and written back by the
// window that owns each value.
struct Settings
{
    QString HidPath; // folder last used for a profile, "" = none
    QString KcfPath; // folder last used for a keymap
    QString PicPath; // folder last used for a picture
    QString Language; // full path of the language file, "" = built-in English
    int Left = 0; // main window's left edge in pixels; 0 or less = designed position
    int Top = 0;
    int Speed = DefaultSpeed; // serial speed in bit/s
    // Stored as COMPort (its number, in 16 bits) on Windows, elsewhere as
    // PortName (the device path).
    SerialPort Port;
    // Stored as Connection ("Serial" or "Bluetooth"; anything else, or none,
    // is the serial port), BluetoothAddress, BluetoothName and
    // BluetoothMethod ("Push" or "FTP").
    PhoneConnection Connection = PhoneConnection::Serial;
    BluetoothPhone Phone;

    static constexpr int DefaultSpeed = 115200;
    static constexpr int HighestSpeed = 921600;

    // A port to send to is configured.
    bool HasPort() const { return Port.IsSet(); }
    // The chosen way to the phone is configured: the port, or the phone.
    bool HasConnection() const { return Connection == PhoneConnection::Bluetooth ? Phone.IsSet() : HasPort(); }
};

// The speed actually used: values below 1 or above 921600 give 115200.
int SpeedInRange(qint64 speed);

// The settings store: on Windows the registry key Software\Quillon\PMX of the
// current user (values missing there are looked up under the same key of the
// local machine, which a normal user may only read); elsewhere an INI file in
// the user's configuration folder. A store at an explicit INI path serves tests.
class SettingsStore
{
public:
    SettingsStore();
    explicit SettingsStore(const QString &iniPath);
    ~SettingsStore();
    SettingsStore(const SettingsStore &) = delete;
    SettingsStore &operator=(const SettingsStore &) = delete;

    // Every value with its default and range rules; unreadable values take
    // their defaults silently.
    Settings Read() const;

    // What the main window writes when it closes: the three folders, each only
    // when not "", and the window position, always.
    void WriteOnExit(const Settings &settings);
    // What the settings window writes.
    void WriteLanguage(const QString &language);
    // Both COMPort and PortName are written, as they always were; the one this
    // system does not use keeps the value it had.
    void WritePort(const SerialPort &port, int speed);
    // The connection chosen and the Bluetooth phone, whichever is chosen.
    void WriteConnection(PhoneConnection connection, const BluetoothPhone &phone);

    // Any other value by name ("LasthidClass"), "" when missing.
    QString String(const QString &name) const;
    void SetString(const QString &name, const QString &value);

    // Pushes pending writes to disk; false when they could not be stored.
    [[nodiscard]] bool Sync();

    QString Location() const;

private:
    QVariant Value(const QString &name) const;

    std::unique_ptr<QSettings> m_user;
    std::unique_ptr<QSettings> m_machine; // read-only fallback, Windows only
};
