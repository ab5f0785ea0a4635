// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings/settingsstore.h"

#include <QDialog>

#include <optional>

class FileTypes;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QListWidget;
class QRadioButton;

// The program's settings: the interface language, whether the program owns
// the .hid and .kcf file types, and how the phone is reached: the serial port
// and speed, or (where the build can) a paired Bluetooth phone and the way
// the profile is sent to it.
// Opening it registers the program's file classes; OK writes what was chosen,
// Abort writes nothing.
class SettingsWindow : public QDialog
{
    Q_OBJECT

public:
    SettingsWindow(SettingsStore &store, FileTypes &fileTypes, QWidget *parent = nullptr);

    QListWidget *LanguageList() const { return m_languages; }
    QCheckBox *ProfileTypeBox() const { return m_hidBox; }
    QCheckBox *KeymapTypeBox() const { return m_kcfBox; }
    QComboBox *PortBox() const { return m_port; }
    QComboBox *SpeedBox() const { return m_speed; }
    // nullptr when the build cannot send over Bluetooth.
    QRadioButton *BluetoothChoice() const { return m_bluetoothChoice; }
    QComboBox *PhoneBox() const { return m_phone; }
    QComboBox *MethodBox() const { return m_method; }

    // The language files found with the program: name without ".lng" and
    // full path, sorted by name.
    static QList<std::pair<QString, QString>> LanguageFiles();

public slots:
    void accept() override;

private:
    void AddBluetoothChoice(QFormLayout &layout, const Settings &settings);
    void ShowConnectionChoice();
    // The phone the box names: a listed one, or a typed address (its name
    // then taken from the list when it is there); std::nullopt for text that
    // names none.
    std::optional<BluetoothPhone> ChosenPhone() const;

    SettingsStore &m_store;
    FileTypes &m_fileTypes;
    QListWidget *m_languages = nullptr;
    QCheckBox *m_hidBox = nullptr;
    QCheckBox *m_kcfBox = nullptr;
    QComboBox *m_port = nullptr;
    QComboBox *m_speed = nullptr;
    QRadioButton *m_serialChoice = nullptr;
    QRadioButton *m_bluetoothChoice = nullptr;
    QComboBox *m_phone = nullptr;
    QComboBox *m_method = nullptr;
};
