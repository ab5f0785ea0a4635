// SPDX-License-Identifier: GPL-3.0-or-later
#include "filenamedialogs.h"

#include "editordialogs.h"
#include "settings/languagetext.h"
#include "settings/settingsstore.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QString DialogText(const QString &key, const QString &english)
{
    return LanguageText(u"CommonDialog"_s, key, english);
}

QString KeymapFilter()
{
    return DialogText(u"Filter_kcf"_s, u"Keymap Configuration Files (*.kcf)"_s) + "|*.kcf"_L1;
}

} // namespace

FileNameDialogs::FileNameDialogs(EditorDialogs &dialogs, Settings &settings, QWidget *parent)
    : m_dialogs(dialogs), m_settings(settings), m_parent(parent)
{
}

QString FileNameDialogs::AskOpen(QString &folder, const QString &title, const QString &filter)
{
    const QString path = m_dialogs.OpenFileName(m_parent, title, folder, filter);
    if (!path.isEmpty())
        folder = QFileInfo(path).absolutePath();
    return path;
}

QString FileNameDialogs::AskSave(QString &folder, const QString &title, const QString &name, const QString &filter)
{
    const EditorDialogs::ChosenFile chosen
        = m_dialogs.SaveFileName(m_parent, title, QDir(folder).filePath(name), filter);
    const QString path = SaveDialogPath(chosen, filter);
    if (!path.isEmpty())
        folder = QFileInfo(path).absolutePath();
    return path;
}

QString FileNameDialogs::FileToOpen()
{
    const QString filter = DialogText(u"Filter_kcf_hid"_s, u"Remote Profile, Keymap (*.hid,*.kcf)"_s)
                           + "|*.hid;*.kcf|"_L1 + DialogText(u"Filter_tar"_s, u"Tar Archive (*.tar)"_s)
                           + "|*.tar"_L1;
    return m_dialogs.OpenFileName(m_parent, DialogText(u"Caption_OpenHid"_s, QString()), m_settings.HidPath,
                                  filter);
}

void FileNameDialogs::Opened(const QString &path)
{
    // Open has the one folder, for the keymaps it opens too.
    m_settings.HidPath = QFileInfo(path).absolutePath();
}

QString FileNameDialogs::ProfileToSave(const QString &name)
{
    return AskSave(m_settings.HidPath, DialogText(u"Caption_Savehid"_s, u"Save Profile as..."_s), name,
                   DialogText(u"Filter_hid"_s, u"Remote Profiles (*.hid)"_s) + "|*.hid"_L1);
}

QString FileNameDialogs::KeymapToSave(const QString &name)
{
    return AskSave(m_settings.KcfPath, DialogText(u"Caption_SaveKcf"_s, u"Save Keymap as..."_s), name,
                   KeymapFilter());
}

QString FileNameDialogs::PictureToImport()
{
    // The text names four types; the pattern takes ".png" as well.
    return AskOpen(m_settings.PicPath, DialogText(u"Caption_LoadPicture"_s, u"Load Picture"_s),
                   DialogText(u"Filter_Pics"_s, u"Picture Files (*.bmp,*.jpg,*.jpeg,*.gif)"_s)
                       + "|*.bmp;*.jpg;*.jpeg;*.gif;*.png"_L1);
}

QString FileNameDialogs::KeymapToImport()
{
    return AskOpen(m_settings.KcfPath, DialogText(u"Caption_LoadKeymap"_s, u"Load Keymap"_s), KeymapFilter());
}

QString FileNameDialogs::PictureToExport(const QString &name, const QString &extension)
{
    const QString filter = DialogText(u"Filter_File"_s, u"File"_s) + " (*."_L1 + extension + ")|*."_L1 + extension;
    return AskSave(m_settings.PicPath, DialogText(u"Caption_SavePicture"_s, u"Save Picture as..."_s),
                   name + u'.' + extension, filter);
}
