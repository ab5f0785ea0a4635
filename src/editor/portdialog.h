// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QComboBox;

// The serial port and speed used to reach the phone. OK stores a chosen port
// (on Windows its number, elsewhere its device path) and a numeric speed (out
// of range: 115200); a speed that is not a number leaves the stored one alone.
class PortDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PortDialog(QWidget *parent = nullptr);

    QComboBox *PortBox() const { return m_port; }
    QComboBox *SpeedBox() const { return m_speed; }

    // The port list as offered: on Windows "COM" and a number, elsewhere device
    // paths, sorted, rfcomm and USB devices first.
    static QStringList AvailablePorts();

public slots:
    void accept() override;

private:
    QComboBox *m_port = nullptr;
    QComboBox *m_speed = nullptr;
};
