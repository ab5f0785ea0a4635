// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogfilter.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

QList<DialogFilter> ParseDialogFilter(const QString &filter)
{
    QString text = filter.isEmpty() ? u"Alle Dateien|*.*"_s : filter;
    if (!text.endsWith(u'|'))
        text += u'|';
    const QStringList parts = text.split(u'|');
    QList<DialogFilter> filters;
    // The last part is the empty text after the final "|".
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        filters.append(DialogFilter{parts[i], i + 1 < parts.size() - 1 ? parts[i + 1] : QString()});
    return filters;
}

QString ToQtFilter(const QString &filter)
{
    QStringList qtFilters;
    for (const DialogFilter &f : ParseDialogFilter(filter)) {
        QStringList patterns = f.Pattern.split(u';', Qt::SkipEmptyParts);
        for (QString &pattern : patterns)
            pattern = pattern.trimmed();
        qtFilters << f.Text + " ("_L1 + patterns.join(u' ') + u')';
    }
    return qtFilters.join(";;"_L1);
}

int QtFilterIndex(const QString &filter, const QString &chosen)
{
    const qsizetype whole = ToQtFilter(filter).split(";;"_L1).indexOf(chosen);
    if (whole >= 0)
        return static_cast<int>(whole);
    // A dialog that hides the name filter details gives back the text it
    // showed: the filter's own text, without the patterns Qt appended.
    const QList<DialogFilter> filters = ParseDialogFilter(filter);
    for (qsizetype i = 0; i < filters.size(); ++i) {
        if (filters[i].Text.simplified() == chosen.simplified())
            return static_cast<int>(i);
    }
    return -1;
}

QString CompleteSaveName(const QString &name, const QString &pattern)
{
    if (name.isEmpty() || pattern.size() < 2 || !pattern.startsWith(u'*') || pattern == "*.*"_L1)
        return name;
    const QStringList patterns = pattern.split(u';', Qt::SkipEmptyParts);
    // Only the file name: a folder's dots and separators must not decide.
    const QString lower = QFileInfo(name).fileName().toLower();
    for (const QString &p : patterns) {
        // The pattern as written against the lower-cased name, so an upper-case
        // pattern never matches.
        const QRegularExpression wildcard(
            QRegularExpression::wildcardToRegularExpression(p, QRegularExpression::UnanchoredWildcardConversion));
        const QRegularExpression anchored(u"\\A(?:"_s + wildcard.pattern() + u")\\z"_s);
        if (anchored.match(lower).hasMatch())
            return name;
    }
    return patterns.isEmpty() ? name : name + patterns.first().mid(1);
}

QString JoinChosenFiles(const QString &folder, const QList<QString> &names)
{
    const QChar separator = QDir::separator();
    const QString prefix = folder.endsWith(separator) ? folder : folder + separator;
    QStringList paths;
    for (const QString &name : names)
        paths << prefix + name;
    return paths.join("\r\n"_L1);
}
