// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

// The program's file-dialog filters are written "text|pattern|text|pattern|",
// several patterns in one element separated by ";". A missing final "|" is
// added; an empty filter stands for "Alle Dateien|*.*".
struct DialogFilter
{
    QString Text;
    QString Pattern;
};
QList<DialogFilter> ParseDialogFilter(const QString &filter);

// The same filters in Qt's notation: each as its text followed by the patterns
// in parentheses ("Keymaps (*.kcf)"), joined by ";;". Show them with the name
// filter details hidden, so that the text reads exactly as written.
QString ToQtFilter(const QString &filter);
// The index of the filter a Qt file dialog reports as chosen: a Qt filter
// string made by ToQtFilter, or only its text when the dialog hid the name
// filter details; -1 when none.
int QtFilterIndex(const QString &filter, const QString &chosen);

// The name a save dialog returns: when the chosen filter's pattern is at least
// two characters, starts with "*" and is not "*.*", a name that matches none of
// its patterns (compared with the name in lower case) gets the first pattern's
// extension appended ("Games" under "*.kcf" becomes "Games.kcf").
QString CompleteSaveName(const QString &name, const QString &pattern);

// Paths chosen in a multi-selection, as one text: folder and name joined by
// the platform's separator (not doubled) per file, the files joined by CR LF.
QString JoinChosenFiles(const QString &folder, const QList<QString> &names);
