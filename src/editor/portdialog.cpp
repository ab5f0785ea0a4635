// SPDX-License-Identifier: GPL-3.0-or-later
#include "portdialog.h"

#include "settings/languagetext.h"
#include "settings/settingsstore.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPortInfo>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString SettingsText(const QString &key, const QString &english)
{
    return LanguageText(u"SettingsWindow"_s, key, english);
}

// Bluetooth and USB serial devices first: those are where phones are.
int PortRank(const QString &name)
{
    if (name.contains("rfcomm"_L1))
        return 0;
    if (name.contains("ttyACM"_L1) || name.contains("ttyUSB"_L1))
        return 1;
    return 2;
}

} // namespace

QStringList PortDialog::AvailablePorts()
{
    QStringList ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
#ifdef Q_OS_WIN
        ports << info.portName();
#else
        ports << info.systemLocation();
#endif
    }
    ports.removeDuplicates();
    std::sort(ports.begin(), ports.end(), [](const QString &a, const QString &b) {
        const int ra = PortRank(a);
        const int rb = PortRank(b);
        return ra != rb ? ra < rb : QString::localeAwareCompare(a, b) < 0;
    });
    return ports;
}

PortDialog::PortDialog(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(SettingsText(u"Caption"_s, u"Settings"_s));
    const Settings settings = SettingsStore().Read();

    m_port = new QComboBox(this);
    m_port->setEditable(true);
    m_port->addItems(AvailablePorts());
#ifdef Q_OS_WIN
    const QString current = settings.COMPort != 0 ? u"COM%1"_s.arg(settings.COMPort) : QString();
#else
    const QString current = settings.PortName;
#endif
    m_port->setCurrentText(current);
    m_port->lineEdit()->setPlaceholderText(u"/dev/rfcomm0"_s);

    m_speed = new QComboBox(this);
    m_speed->setEditable(true);
    for (const int speed : {256000, 115200, 57600, 19200, 9600, 2400})
        m_speed->addItem(QString::number(speed));
    m_speed->setCurrentText(QString::number(settings.Speed));

    auto *form = new QFormLayout;
    form->addRow(SettingsText(u"Frame_Port"_s, u"COM - Port:"_s), m_port);
    form->addRow(SettingsText(u"Frame_Speed"_s, u"Baudrate:"_s), m_speed);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(SettingsText(u"Button_OK"_s, u"OK"_s));
    buttons->button(QDialogButtonBox::Cancel)->setText(SettingsText(u"Button_Abort"_s, u"Abort"_s));
    connect(buttons, &QDialogButtonBox::accepted, this, &PortDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PortDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

void PortDialog::accept()
{
    SettingsStore store;
    Settings settings = store.Read();
    const QString port = m_port->currentText().trimmed();
    if (!port.isEmpty()) {
#ifdef Q_OS_WIN
        QString digits = port;
        digits.remove("COM"_L1, Qt::CaseInsensitive);
        bool ok = false;
        const int number = digits.toInt(&ok);
        if (ok)
            settings.COMPort = static_cast<std::int16_t>(number);
#else
        settings.PortName = port;
#endif
    }
    bool numeric = false;
    const qint64 speed = m_speed->currentText().trimmed().toLongLong(&numeric);
    if (numeric)
        settings.Speed = SpeedInRange(speed);
    store.WritePort(settings.COMPort, settings.PortName, settings.Speed);
    (void)store.Sync();
    QDialog::accept();
}
