// SPDX-License-Identifier: GPL-3.0-or-later
#include "recentfiles.h"

#include "settingsstore.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

QString ValueName(int index)
{
    return u"RecentFile%1"_s.arg(index + 1);
}

} // namespace

RecentFiles::RecentFiles(const QStringList &paths)
{
    for (auto path = paths.crbegin(); path != paths.crend(); ++path)
        Add(*path);
}

bool RecentFiles::SameFile(const QString &one, const QString &other)
{
#ifdef Q_OS_WIN
    constexpr Qt::CaseSensitivity Case = Qt::CaseInsensitive;
#else
    constexpr Qt::CaseSensitivity Case = Qt::CaseSensitive;
#endif
    return QDir::cleanPath(QDir::fromNativeSeparators(one))
               .compare(QDir::cleanPath(QDir::fromNativeSeparators(other)), Case)
           == 0;
}

void RecentFiles::Add(const QString &path)
{
    if (path.isEmpty())
        return;
    Remove(path);
    m_paths.prepend(path);
    if (m_paths.size() > MaxCount)
        m_paths.resize(MaxCount);
}

void RecentFiles::Remove(const QString &path)
{
    m_paths.removeIf([&path](const QString &listed) { return SameFile(listed, path); });
}

RecentFiles RecentFiles::Read(const SettingsStore &store)
{
    QStringList paths;
    for (int index = 0; index < MaxCount; ++index)
        paths << store.String(ValueName(index));
    return RecentFiles(paths);
}

void RecentFiles::Write(SettingsStore &store) const
{
    for (int index = 0; index < MaxCount; ++index)
        store.SetString(ValueName(index), m_paths.value(index));
}
