// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DocumentMessage;
class QPrinter;
class QWidget;

// The modal questions and messages of the editor, behind one seam so that
// tests can answer them without a dialog blocking.
class EditorDialogs
{
public:
    enum class Answer { Yes, No, Cancel };

    virtual ~EditorDialogs() = default;

    virtual void ShowMessage(QWidget *parent, const DocumentMessage &message) = 0;
    // Yes / No / Cancel with the exclamation icon.
    virtual Answer AskYesNoCancel(QWidget *parent, const QString &text, const QString &title) = 0;
    // A file to open; "" when the user cancels. filter is in the program's
    // notation ("text|pattern|...").
    virtual QString OpenFileName(QWidget *parent, const QString &title, const QString &folder,
                                 const QString &filter) = 0;
    // A file to save to, as the user typed or chose it, and the index of the
    // filter chosen (-1 for none); an empty path when the user cancels.
    struct ChosenFile
    {
        QString Path;
        int FilterIndex = -1;
    };
    virtual ChosenFile SaveFileName(QWidget *parent, const QString &title, const QString &proposedPath,
                                    const QString &filter) = 0;
    // The settings window; true when the user confirmed (and it stored them).
    virtual bool ConfigurePort(QWidget *parent) = 0;
    // The print dialog, titled title, which sets up the printer; false when
    // the user cancels.
    virtual bool SetUpPrinter(QWidget *parent, QPrinter &printer, const QString &title) = 0;
};

// The path a save dialog's answer stands for: completed with the chosen
// filter's extension where its name matches none of the filter's patterns.
QString SaveDialogPath(const EditorDialogs::ChosenFile &chosen, const QString &filter);

// The real dialogs.
class StandardEditorDialogs : public EditorDialogs
{
public:
    void ShowMessage(QWidget *parent, const DocumentMessage &message) override;
    Answer AskYesNoCancel(QWidget *parent, const QString &text, const QString &title) override;
    QString OpenFileName(QWidget *parent, const QString &title, const QString &folder, const QString &filter) override;
    ChosenFile SaveFileName(QWidget *parent, const QString &title, const QString &proposedPath,
                            const QString &filter) override;
    bool ConfigurePort(QWidget *parent) override;
    bool SetUpPrinter(QWidget *parent, QPrinter &printer, const QString &title) override;
};
