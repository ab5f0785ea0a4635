// SPDX-License-Identifier: GPL-3.0-or-later
#include "languagetext.h"

#include "support/inifile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The system reader opens the file on every lookup, so an edited language file
// shows at once; we keep the parsed file and read it again when it changes.
struct LanguageCache
{
    QMutex mutex;
    QString path;
    QDateTime modified;
    qint64 size = -1;
    IniFile ini;
};

LanguageCache &Cache()
{
    static LanguageCache cache;
    return cache;
}

void RefreshLocked(LanguageCache &cache)
{
    const QFileInfo info(cache.path);
    const QDateTime modified = info.exists() ? info.lastModified() : QDateTime();
    const qint64 size = info.exists() ? info.size() : -1;
    if (modified == cache.modified && size == cache.size)
        return;
    cache.modified = modified;
    cache.size = size;
    cache.ini = IniFile::Load(cache.path).value_or(IniFile());
}

} // namespace

QString Language()
{
    LanguageCache &cache = Cache();
    const QMutexLocker lock(&cache.mutex);
    return cache.path;
}

void SetLanguage(const QString &path)
{
    LanguageCache &cache = Cache();
    const QMutexLocker lock(&cache.mutex);
    if (cache.path == path)
        return;
    cache.path = path;
    cache.modified = QDateTime();
    cache.size = -1;
    cache.ini = IniFile();
}

QString LanguageText(const QString &section, const QString &key, const QString &defaultText)
{
    QString text;
    {
        LanguageCache &cache = Cache();
        const QMutexLocker lock(&cache.mutex);
        if (!cache.path.isEmpty()) {
            RefreshLocked(cache);
            text = cache.ini.Value(section, key);
        }
    }
    if (text.isEmpty())
        text = defaultText;
    return text.replace("%n"_L1, "\r\n"_L1);
}

QString LanguageText(const UiText &text)
{
    if (text.Key.isEmpty())
        return text.English.toString();
    return LanguageText(text.Section.toString(), text.Key.toString(), text.English.toString());
}

QString WithoutAccessKey(QString text)
{
    static const QRegularExpression accessKey(u"&(.)"_s);
    return text.replace(accessKey, u"\\1"_s);
}

QString FillPlaceholders(QStringView text, std::initializer_list<std::pair<QLatin1StringView, QString>> values)
{
    QString filled;
    filled.reserve(text.size());
    for (qsizetype at = 0; at < text.size();) {
        const QStringView rest = text.sliced(at);
        const auto value = std::find_if(values.begin(), values.end(), [rest](const auto &placeholder) {
            return rest.startsWith(placeholder.first);
        });
        if (value == values.end()) {
            filled += text[at++];
            continue;
        }
        filled += value->second;
        at += value->first.size();
    }
    return filled;
}
