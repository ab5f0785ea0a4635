// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class FileTypes;
class QCheckBox;
class QComboBox;
class QListWidget;
class SettingsStore;

// The program's settings: the interface language, whether the program owns
// the .hid and .kcf file types, and the serial port and speed of the phone.
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

    // The language files found with the program: name without ".lng" and
    // full path, sorted by name.
    static QList<std::pair<QString, QString>> LanguageFiles();

public slots:
    void accept() override;

private:
    void FillPorts();

    SettingsStore &m_store;
    FileTypes &m_fileTypes;
    QListWidget *m_languages = nullptr;
    QCheckBox *m_hidBox = nullptr;
    QCheckBox *m_kcfBox = nullptr;
    QComboBox *m_port = nullptr;
    QComboBox *m_speed = nullptr;
};
