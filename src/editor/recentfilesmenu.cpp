// SPDX-License-Identifier: GPL-3.0-or-later
#include "recentfilesmenu.h"

#include "editortexts.h"
#include "profile/document.h"
#include "settings/settingsstore.h"
#include "support/nativefile.h"

#include <QDir>

using namespace Qt::StringLiterals;

RecentFilesMenu::RecentFilesMenu(const Document &document, SettingsStore &store, QWidget *parent)
    : QMenu(parent), m_store(store), m_files(RecentFiles::Read(store))
{
    connect(&document, &Document::FileOpenedOrSaved, this, &RecentFilesMenu::Take);
    Rebuild();
}

void RecentFilesMenu::ApplyLanguage()
{
    setTitle(LanguageText(EditorText::MenuRecent));
}

void RecentFilesMenu::Take(const QString &path)
{
    m_files.Add(path);
    m_files.Write(m_store);
    Rebuild();
}

void RecentFilesMenu::Choose(const QString &path)
{
    if (PathExists(path)) {
        emit FileChosen(path);
        return;
    }
    m_files.Remove(path);
    m_files.Write(m_store);
    Rebuild();
    const QString text = FillPlaceholders(LanguageText(EditorText::RecentFileMissing),
                                          {{"%f"_L1, QDir::toNativeSeparators(path)}});
    emit MessageRaised(DocumentMessage{text, LanguageText(EditorText::NoteTitle), DocumentMessage::Icon::Exclamation});
}

void RecentFilesMenu::Rebuild()
{
    clear();
    for (int index = 0; const QString &path : m_files.Paths()) {
        // The digit is the entry's access key; an "&" in the name is shown as one.
        const QString text = u"&%1 %2"_s.arg(++index).arg(QDir::toNativeSeparators(path).replace(u'&', "&&"_L1));
        addAction(text, this, [this, path] { Choose(path); });
    }
    menuAction()->setEnabled(!m_files.Paths().isEmpty());
}
