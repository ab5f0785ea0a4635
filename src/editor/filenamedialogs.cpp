// SPDX-License-Identifier: GPL-3.0-or-later
#include "filenamedialogs.h"

#include "editordialogs.h"
#include "editortexts.h"
#include "settings/settingsstore.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QString KeymapFilter()
{
    return LanguageText(EditorText::KeymapFilter) + "|*.kcf"_L1;
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
    const EditorDialogs::ChosenFile chosen = m_dialogs.SaveFileName(m_parent, title, QDir(folder).filePath(name),
                                                                    filter);
    const QString path = SaveDialogPath(chosen, filter);
    if (!path.isEmpty())
        folder = QFileInfo(path).absolutePath();
    return path;
}

QString FileNameDialogs::FileToOpen()
{
    const QString filter = LanguageText(EditorText::OpenFilter) + "|*.hid;*.kcf|"_L1
                           + LanguageText(EditorText::TarFilter) + "|*.tar"_L1;
    return m_dialogs.OpenFileName(m_parent, LanguageText(EditorText::OpenCaption), m_settings.HidPath, filter);
}

void FileNameDialogs::Opened(const QString &path)
{
    // Open has the one folder, for the keymaps it opens too.
    m_settings.HidPath = QFileInfo(path).absolutePath();
}

QString FileNameDialogs::ProfileToSave(const QString &name)
{
    return AskSave(m_settings.HidPath, LanguageText(EditorText::SaveProfileCaption), name,
                   LanguageText(EditorText::ProfileFilter) + "|*.hid"_L1);
}

QString FileNameDialogs::KeymapToSave(const QString &name)
{
    return AskSave(m_settings.KcfPath, LanguageText(EditorText::SaveKeymapCaption), name, KeymapFilter());
}

QString FileNameDialogs::PictureToImport()
{
    // The text names four types; the pattern takes ".png" as well.
    return AskOpen(m_settings.PicPath, LanguageText(EditorText::LoadPictureCaption),
                   LanguageText(EditorText::PictureFilter) + "|*.bmp;*.jpg;*.jpeg;*.gif;*.png"_L1);
}

QString FileNameDialogs::KeymapToImport()
{
    return AskOpen(m_settings.KcfPath, LanguageText(EditorText::LoadKeymapCaption), KeymapFilter());
}

QString FileNameDialogs::PictureToExport(const QString &name, const QString &extension)
{
    const QString filter = LanguageText(EditorText::FileFilter) + " (*."_L1 + extension + ")|*."_L1 + extension;
    return AskSave(m_settings.PicPath, LanguageText(EditorText::SavePictureCaption), name + u'.' + extension, filter);
}

QString FileNameDialogs::OverviewToExport(const QString &name)
{
    // Kept with the profiles: an overview is printed and filed with them.
    const QString filter = LanguageText(EditorText::OverviewPdfFilter) + "|*.pdf|"_L1
                           + LanguageText(EditorText::OverviewPngFilter) + "|*.png"_L1;
    return AskSave(m_settings.HidPath, LanguageText(EditorText::SaveOverviewCaption), name + ".pdf"_L1, filter);
}
