// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>

class Document;
class QAction;

// The Edit menu: Undo and Redo of the document's steps, each available while
// there is a step to take back or to make again.
class EditMenu : public QMenu
{
    Q_OBJECT

public:
    EditMenu(Document &document, QWidget *parent);

    QAction *UndoAction() const { return m_undo; }
    QAction *RedoAction() const { return m_redo; }
    void ApplyLanguage();
    // While paused (the Snapshot countdown) neither is available, so that the
    // key being captured stays as it is until the capture.
    void SetPaused(bool paused);

private:
    void UpdateActions();

    const Document &m_document;
    QAction *m_undo = nullptr;
    QAction *m_redo = nullptr;
    bool m_paused = false;
};
