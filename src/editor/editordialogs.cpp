// SPDX-License-Identifier: GPL-3.0-or-later
#include "editordialogs.h"

#include "profile/document.h"
#include "settings/filetypes.h"
#include "settings/settingsstore.h"
#include "settingswindow.h"
#include "support/dialogfilter.h"

#include <QCoreApplication>

#include <QFileDialog>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QScreen>
#include <QtMath>

#include <QPrintDialog>
#include <algorithm>

namespace {

// A text in columns separated by tabs, such as the keymap reader's report of
// its key errors, lines up only in a fixed-width font and unwrapped. Its lines
// are indented by three spaces and pad the key names to eight characters with
// tabs, so the tab stops lie every eight characters after the indent. The
// message box keeps its text; only the display changes.
void ShowInColumns(QMessageBox &box)
{
    auto *label = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    if (!label || !grid)
        return;
    auto *view = new QPlainTextEdit(box.text(), &box);
    view->setReadOnly(true);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setFrameShape(QFrame::NoFrame);
    view->viewport()->setAutoFillBackground(false);
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetricsF metrics(view->font());
    const qreal column = metrics.horizontalAdvance(u' ');
    constexpr int Indent = 3;
    constexpr int TabWidth = 8;
    QTextOption option = view->document()->defaultTextOption();
    QList<QTextOption::Tab> tabs;
    for (int stop = Indent + TabWidth; stop < 200; stop += TabWidth)
        tabs.append(QTextOption::Tab(stop * column, QTextOption::LeftTab));
    option.setTabs(tabs);
    view->document()->setDefaultTextOption(option);
    // As large as the text, up to most of the screen; beyond that it scrolls.
    const QStringList lines = box.text().split(QRegularExpression(QStringLiteral("\\r?\\n")));
    qsizetype columns = 0;
    for (const QString &line : lines) {
        qsizetype at = 0;
        for (const QChar c : line)
            at = c == u'\t' ? Indent + (std::max<qsizetype>(at - Indent, 0) / TabWidth + 1) * TabWidth : at + 1;
        columns = std::max(columns, at);
    }
    const int margins = 2 * qCeil(view->document()->documentMargin()) + 4;
    const QSize available = box.screen() ? box.screen()->availableSize() * 3 / 4 : QSize(1000, 700);
    // One column and one line to spare: the text layout rounds each line up.
    view->setMinimumSize(std::min(qCeil((columns + 1) * column) + margins, available.width()),
                         std::min(qCeil((lines.size() + 1) * metrics.lineSpacing()) + margins, available.height()));
    grid->replaceWidget(label, view);
    label->hide();
}

} // namespace

void StandardEditorDialogs::ShowMessage(QWidget *parent, const DocumentMessage &message)
{
    QMessageBox box(message.Kind == DocumentMessage::Icon::Critical ? QMessageBox::Critical : QMessageBox::Warning,
                    message.Title, message.Text, QMessageBox::Ok, parent);
    if (message.Text.contains(u'\t'))
        ShowInColumns(box);
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
