// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/editordialogs.h"
#include "profile/document.h"

#include <QList>
#include <QPrinter>
#include <QString>

#include <functional>

// Answers every question the way a test says, without a dialog.
class ScriptedDialogs : public EditorDialogs
{
public:
    QList<QString> Shown;
    QList<DocumentMessage> Messages;
    int Questions = 0;
    Answer NextAnswer = Answer::No;
    QString NextOpen;
    QString NextSave;
    QString LastOpenFolder;
    QString LastSaveProposal;
    int PortDialogs = 0;
    bool RealSaveDialog = false; // the file dialog itself, for a test to drive
    std::function<void()> OnConfigurePort;
    QString PrintTo; // the PDF file the print dialog chooses; "" cancels it

    void ShowMessage(QWidget *, const DocumentMessage &message) override
    {
        Shown << message.Text;
        Messages << message;
    }
    Answer AskYesNoCancel(QWidget *, const QString &text, const QString &) override
    {
        ++Questions;
        Shown << text;
        return NextAnswer;
    }
    QString OpenFileName(QWidget *, const QString &, const QString &folder, const QString &) override
    {
        LastOpenFolder = folder;
        return NextOpen;
    }
    ChosenFile SaveFileName(QWidget *parent, const QString &title, const QString &proposed,
                            const QString &filter) override
    {
        LastSaveProposal = proposed;
        if (RealSaveDialog)
            return StandardEditorDialogs().SaveFileName(parent, title, proposed, filter);
        return ChosenFile{NextSave, 0};
    }
    bool ConfigurePort(QWidget *) override
    {
        ++PortDialogs;
        if (OnConfigurePort)
            OnConfigurePort();
        return true;
    }
    bool SetUpPrinter(QWidget *, QPrinter &printer, const QString &) override
    {
        printer.setOutputFileName(PrintTo);
        return !PrintTo.isEmpty();
    }
};
