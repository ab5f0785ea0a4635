// SPDX-License-Identifier: GPL-3.0-or-later
#include "settingsstore.h"

#include <QSettings>

#include <cstdint>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

#ifdef Q_OS_WIN
constexpr auto UserKey = "HKEY_CURRENT_USER\\Software\\Quillon\\PMX"_L1;
constexpr auto MachineKey = "HKEY_LOCAL_MACHINE\\Software\\Quillon\\PMX"_L1;
#endif

int ToInt(const QVariant &value)
{
    bool ok = false;
    const qint64 number = value.toLongLong(&ok);
    if (!ok || number < std::numeric_limits<std::int32_t>::min() || number > std::numeric_limits<std::int32_t>::max())
        return 0;
    return static_cast<int>(number);
}

// The port number is kept in 16 bits, as it always was.
int PortNumberIn16Bits(int number)
{
    return static_cast<std::int16_t>(number);
}

} // namespace

int SpeedInRange(qint64 speed)
{
    return (speed < 1 || speed > Settings::HighestSpeed) ? Settings::DefaultSpeed : static_cast<int>(speed);
}

SettingsStore::SettingsStore()
{
#ifdef Q_OS_WIN
    m_user = std::make_unique<QSettings>(QString(UserKey), QSettings::NativeFormat);
    m_machine = std::make_unique<QSettings>(QString(MachineKey), QSettings::NativeFormat);
#else
    m_user = std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, u"Padmapper"_s, u"Padmapper"_s);
#endif
}

SettingsStore::SettingsStore(const QString &iniPath)
    : m_user(std::make_unique<QSettings>(iniPath, QSettings::IniFormat))
{
}

SettingsStore::~SettingsStore() = default;

QVariant SettingsStore::Value(const QString &name) const
{
    QVariant value = m_user->value(name);
    if (!value.isValid() && m_machine)
        value = m_machine->value(name);
    return value;
}

QString SettingsStore::String(const QString &name) const
{
    return Value(name).toString();
}

void SettingsStore::SetString(const QString &name, const QString &value)
{
    m_user->setValue(name, value);
}

Settings SettingsStore::Read() const
{
    Settings settings;
    settings.HidPath = String(u"HidPath"_s);
    settings.KcfPath = String(u"KcfPath"_s);
    settings.PicPath = String(u"PicPath"_s);
    settings.Language = String(u"Language"_s);
    settings.Left = ToInt(Value(u"Left"_s));
    settings.Top = ToInt(Value(u"Top"_s));
    const QVariant speed = Value(u"Speed"_s);
    settings.Speed = SpeedInRange(speed.isValid() ? speed.toLongLong() : 0);
#ifdef Q_OS_WIN
    settings.Port = SerialPort::FromNumber(PortNumberIn16Bits(ToInt(Value(u"COMPort"_s))));
#else
    settings.Port = SerialPort::Parse(String(u"PortName"_s)).value_or(SerialPort());
#endif
    if (String(u"Connection"_s) == "Bluetooth"_L1)
        settings.Connection = PhoneConnection::Bluetooth;
    settings.Phone.Address = ParseBluetoothAddress(String(u"BluetoothAddress"_s)).value_or(QString());
    settings.Phone.Name = String(u"BluetoothName"_s);
    settings.Phone.Method = ParseObexMethod(String(u"BluetoothMethod"_s)).value_or(ObexMethod::Push);
    return settings;
}

void SettingsStore::WriteOnExit(const Settings &settings)
{
    for (const auto &[name, value] :
         {std::pair{u"HidPath"_s, settings.HidPath}, std::pair{u"KcfPath"_s, settings.KcfPath},
          std::pair{u"PicPath"_s, settings.PicPath}}) {
        if (!value.isEmpty())
            m_user->setValue(name, value);
    }
    m_user->setValue(u"Left"_s, settings.Left);
    m_user->setValue(u"Top"_s, settings.Top);
}

void SettingsStore::WriteLanguage(const QString &language)
{
    m_user->setValue(u"Language"_s, language);
}

void SettingsStore::WritePort(const SerialPort &port, int speed)
{
#ifdef Q_OS_WIN
    m_user->setValue(u"COMPort"_s, PortNumberIn16Bits(port.Number()));
    m_user->setValue(u"PortName"_s, String(u"PortName"_s));
#else
    m_user->setValue(u"COMPort"_s, PortNumberIn16Bits(ToInt(Value(u"COMPort"_s))));
    m_user->setValue(u"PortName"_s, port.Name());
#endif
    m_user->setValue(u"Speed"_s, speed);
}

void SettingsStore::WriteConnection(PhoneConnection connection, const BluetoothPhone &phone)
{
    m_user->setValue(u"Connection"_s, connection == PhoneConnection::Bluetooth ? u"Bluetooth"_s : u"Serial"_s);
    m_user->setValue(u"BluetoothAddress"_s, phone.Address);
    m_user->setValue(u"BluetoothName"_s, phone.Name);
    m_user->setValue(u"BluetoothMethod"_s, ObexMethodName(phone.Method));
}

bool SettingsStore::Sync()
{
    m_user->sync();
    return m_user->status() == QSettings::NoError;
}

QString SettingsStore::Location() const
{
    return m_user->fileName();
}
