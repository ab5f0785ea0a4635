// SPDX-License-Identifier: GPL-3.0-or-later
#include "editmenu.h"

#include "editortexts.h"
#include "profile/document.h"

EditMenu::EditMenu(Document &document, QWidget *parent) : QMenu(parent), m_document(document)
{
    m_undo = addAction(QString(), &document, &Document::Undo);
    m_undo->setShortcuts(QKeySequence::Undo);
    m_redo = addAction(QString(), &document, &Document::Redo);
    m_redo->setShortcuts(QKeySequence::Redo);
    connect(&document.History(), &QUndoStack::canUndoChanged, this, &EditMenu::UpdateActions);
    connect(&document.History(), &QUndoStack::canRedoChanged, this, &EditMenu::UpdateActions);
    UpdateActions();
}

void EditMenu::ApplyLanguage()
{
    setTitle(LanguageText(EditorText::MenuEdit));
    m_undo->setText(LanguageText(EditorText::MenuUndo));
    m_redo->setText(LanguageText(EditorText::MenuRedo));
}

void EditMenu::SetPaused(bool paused)
{
    m_paused = paused;
    UpdateActions();
}

void EditMenu::UpdateActions()
{
    m_undo->setEnabled(!m_paused && m_document.History().canUndo());
    m_redo->setEnabled(!m_paused && m_document.History().canRedo());
}
