// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

// Read-only INI text with the rules of the Windows private-profile reader:
// section and key names match without regard to case, the first section of a
// name is the one searched, the first key of a name in it wins, blanks around
// names and values are dropped and one pair of matching quotes around a value
// is removed. Lines may end in CR LF, LF or CR.
class IniFile
{
public:
    // The longest value the reader hands back; longer ones are cut.
    static constexpr qsizetype MaximumValueLength = 199;

    IniFile() = default;

    // Windows-1252 text, unless it starts with a UTF-8 or UTF-16LE byte order mark.
    static IniFile FromBytes(QByteArrayView bytes);
    // Empty when the file cannot be read.
    static std::optional<IniFile> Load(const QString &path);

    // The value cut to MaximumValueLength characters; empty when the section or
    // the key is missing (or the value is empty).
    QString Value(QStringView section, QStringView key) const;

private:
    struct Entry
    {
        QString key;
        QString value;
    };
    struct Section
    {
        QString name;
        QList<Entry> entries;
    };
    QList<Section> m_sections;
};

// One value of one INI file, as the program's INI reading routine returns it:
// "" when the file, the section or the key is missing.
QString INI_bearbeiten(const QString &section, const QString &key, const QString &path);
