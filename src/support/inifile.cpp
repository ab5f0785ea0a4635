// SPDX-License-Identifier: GPL-3.0-or-later
#include "inifile.h"

#include "ansitext.h"

#include <QFile>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace {

bool IsIniBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

QStringView TrimBlanks(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && IsIniBlank(text[begin]))
        ++begin;
    while (end > begin && IsIniBlank(text[end - 1]))
        --end;
    return text.sliced(begin, end - begin);
}

QString DecodeIniBytes(QByteArrayView bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return QString::fromUtf8(bytes.sliced(3));
    if (bytes.startsWith("\xFF\xFE")) {
        auto decode = QStringDecoder(QStringDecoder::Utf16LE);
        return decode(bytes.sliced(2));
    }
    return FromAnsi(bytes);
}

} // namespace

IniFile IniFile::FromBytes(QByteArrayView bytes)
{
    IniFile ini;
    const QString text = DecodeIniBytes(bytes);
    Section *current = nullptr;
    qsizetype lineStart = 0;
    while (lineStart <= text.size()) {
        qsizetype lineEnd = lineStart;
        while (lineEnd < text.size() && text[lineEnd] != u'\r' && text[lineEnd] != u'\n')
            ++lineEnd;
        const QStringView line = TrimBlanks(QStringView(text).sliced(lineStart, lineEnd - lineStart));
        if (lineEnd < text.size() && text[lineEnd] == u'\r' && lineEnd + 1 < text.size() && text[lineEnd + 1] == u'\n')
            ++lineEnd;
        lineStart = lineEnd + 1;

        if (line.startsWith(u'[')) {
            const qsizetype close = line.indexOf(u']');
            const QStringView name = close < 0 ? line.sliced(1) : line.sliced(1, close - 1);
            ini.m_sections.append(Section{TrimBlanks(name).toString(), {}});
            current = &ini.m_sections.last();
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (current == nullptr || equals < 0)
            continue;
        QStringView value = TrimBlanks(line.sliced(equals + 1));
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') && value.back() == value.front())
            value = value.sliced(1, value.size() - 2);
        current->entries.append(Entry{TrimBlanks(line.first(equals)).toString(), value.toString()});
    }
    return ini;
}

std::optional<IniFile> IniFile::Load(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return FromBytes(file.readAll());
}

QString IniFile::Value(QStringView section, QStringView key) const
{
    for (const Section &s : m_sections) {
        if (s.name.compare(section, Qt::CaseInsensitive) != 0)
            continue;
        // Like the system reader, only the first section of a name is searched.
        for (const Entry &e : s.entries) {
            if (e.key.compare(key, Qt::CaseInsensitive) == 0)
                return e.value.left(MaximumValueLength);
        }
        return {};
    }
    return {};
}

QString INI_bearbeiten(const QString &section, const QString &key, const QString &path)
{
    const std::optional<IniFile> ini = IniFile::Load(path);
    return ini ? ini->Value(section, key) : QString();
}
