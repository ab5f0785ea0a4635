// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings/recentfiles.h"

#include <QMenu>

class Document;
class SettingsStore;
struct DocumentMessage;

// File > Recent: one entry per recent file, kept in the settings store. The
// list follows every profile and keymap the document opens or saves; a file
// that is gone when chosen leaves the list with a message.
class RecentFilesMenu : public QMenu
{
    Q_OBJECT

public:
    RecentFilesMenu(const Document &document, SettingsStore &store, QWidget *parent);

    const RecentFiles &Files() const { return m_files; }
    void ApplyLanguage();

signals:
    // An entry whose file is there was chosen.
    void FileChosen(const QString &path);
    void MessageRaised(const DocumentMessage &message);

private:
    void Take(const QString &path);
    void Choose(const QString &path);
    void Rebuild();

    SettingsStore &m_store;
    RecentFiles m_files;
};
