// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class EditorDialogs;
class QWidget;
struct Settings;

// The file names the file commands ask the user for, each dialog with its
// title and filter. Every kind of file has its folder in the settings (HidPath
// for profiles and for Open, KcfPath for keymaps, PicPath for pictures): a
// dialog starts there, and the file chosen moves it. Each call returns "" when
// the user cancels.
class FileNameDialogs
{
public:
    // Uses the dialogs and the folders of settings; owns neither.
    FileNameDialogs(EditorDialogs &dialogs, Settings &settings, QWidget *parent);

    // A profile, tar archive or keymap to open. Open moves its folder only for
    // a file it opened: see Opened.
    QString FileToOpen();
    void Opened(const QString &path);
    // Where to save, proposing name.
    QString ProfileToSave(const QString &name);
    QString KeymapToSave(const QString &name);
    QString PictureToImport();
    QString KeymapToImport();
    // Where to export the picture, proposing name with its extension.
    QString PictureToExport(const QString &name, const QString &extension);
    // Where to export the overview, a PDF or a PNG, proposing name.
    QString OverviewToExport(const QString &name);

private:
    QString AskOpen(QString &folder, const QString &title, const QString &filter);
    QString AskSave(QString &folder, const QString &title, const QString &name, const QString &filter);

    EditorDialogs &m_dialogs;
    Settings &m_settings;
    QWidget *m_parent = nullptr;
};
