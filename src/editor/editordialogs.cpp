// SPDX-License-Identifier: GPL-3.0-or-later
#include "editordialogs.h"

#include "profile/document.h"
#include "settings/filetypes.h"
#include "settings/settingsstore.h"
#include "settingswindow.h"
#include "support/dialogfilter.h"

#include <QCoreApplication>

#include <QFileDialog>
#include <QMessageBox>
#include <QPrintDialog>

void StandardEditorDialogs::ShowMessage(QWidget *parent, const DocumentMessage &message)
{
    QMessageBox box(message.Kind == DocumentMessage::Icon::Critical ? QMessageBox::Critical : QMessageBox::Warning,
                    message.Title, message.Text, QMessageBox::Ok, parent);
    box.exec();
}

EditorDialogs::Answer StandardEditorDialogs::AskYesNoCancel(QWidget *parent, const QString &text, const QString &title)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                    parent);
    box.setDefaultButton(QMessageBox::Yes);
    switch (box.exec()) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

QString SaveDialogPath(const EditorDialogs::ChosenFile &chosen, const QString &filter)
{
    const QList<DialogFilter> filters = ParseDialogFilter(filter);
    if (chosen.FilterIndex < 0 || chosen.FilterIndex >= filters.size())
        return chosen.Path;
    return CompleteSaveName(chosen.Path, filters[chosen.FilterIndex].Pattern);
}

QString StandardEditorDialogs::OpenFileName(QWidget *parent, const QString &title, const QString &folder,
                                            const QString &filter)
{
    const QString path = QFileDialog::getOpenFileName(parent, title, folder, ToQtFilter(filter), nullptr,
                                                      QFileDialog::HideNameFilterDetails);
    QCoreApplication::processEvents();
    return path;
}

EditorDialogs::ChosenFile StandardEditorDialogs::SaveFileName(QWidget *parent, const QString &title,
                                                              const QString &proposedPath, const QString &filter)
{
    QString chosenFilter;
    ChosenFile chosen;
    chosen.Path = QFileDialog::getSaveFileName(parent, title, proposedPath, ToQtFilter(filter), &chosenFilter,
                                               QFileDialog::HideNameFilterDetails);
    chosen.FilterIndex = QtFilterIndex(filter, chosenFilter);
    QCoreApplication::processEvents();
    return chosen;
}

bool StandardEditorDialogs::ConfigurePort(QWidget *parent)
{
    SettingsStore store;
    FileTypes fileTypes(QCoreApplication::applicationFilePath());
    SettingsWindow window(store, fileTypes, parent);
    return window.exec() == QDialog::Accepted;
}

bool StandardEditorDialogs::SetUpPrinter(QWidget *parent, QPrinter &printer, const QString &title)
{
    QPrintDialog dialog(&printer, parent);
    dialog.setWindowTitle(title);
    return dialog.exec() == QDialog::Accepted;
}
