// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class SettingsStore;

// The profiles and keymaps last opened or saved, the most recent first, each
// once, at most eight. Two names are the same file when the platform takes
// them for one: on Windows letter case and the kind of slash do not count.
class RecentFiles
{
public:
    static constexpr int MaxCount = 8;

    RecentFiles() = default;
    // The list as stored: empty names and repeats are passed over.
    explicit RecentFiles(const QStringList &paths);

    const QStringList &Paths() const { return m_paths; }
    // Puts path first, removing it from further down and the oldest beyond
    // eight.
    void Add(const QString &path);
    void Remove(const QString &path);

    static bool SameFile(const QString &one, const QString &other);

    // Kept in the values RecentFile1 (the most recent) to RecentFile8.
    static RecentFiles Read(const SettingsStore &store);
    void Write(SettingsStore &store) const;

private:
    QStringList m_paths;
};
