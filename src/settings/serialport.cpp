// SPDX-License-Identifier: GPL-3.0-or-later
#include "serialport.h"

using namespace Qt::StringLiterals;

SerialPort SerialPort::FromNumber(int number)
{
    SerialPort port;
    port.m_number = number;
    return port;
}

std::optional<SerialPort> SerialPort::Parse(const QString &text)
{
    if (text.isEmpty())
        return std::nullopt;
#ifdef Q_OS_WIN
    QString digits = text;
    digits.remove("COM"_L1, Qt::CaseInsensitive);
    bool ok = false;
    const int number = digits.toInt(&ok);
    if (!ok)
        return std::nullopt;
    return FromNumber(number);
#else
    SerialPort port;
    port.m_path = text;
    return port;
#endif
}

QString SerialPort::Name() const
{
#ifdef Q_OS_WIN
    return m_number > 0 ? "COM"_L1 + QString::number(m_number) : QString();
#else
    return m_path;
#endif
}
