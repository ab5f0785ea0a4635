// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's keyboard capture: the countdown on the Snapshot button,
// then the chord held.
//
// Undo and Redo never meet a capture. While the countdown runs, the Edit menu
// is paused, so no step is undone under the key being captured, and pressing
// the Undo or Redo chord cancels the capture: the key keeps its action. A
// chord that is Undo or Redo itself (held since before the countdown) is not
// stored either. Right after a capture, Undo takes it back as one step. A
// user who wants Ctrl+Z on a phone key ticks Ctrl and picks Z in the list.
#include "mainwindow.h"

#include "actioneditor.h"
#include "editmenu.h"
#include "editortexts.h"
#include "heldkeys.h"
#include "keymap/keyboardcapture.h"
#include "phonekeypad.h"
#include "profile/document.h"
#include "shortcutsinhibitor.h"

#include <QApplication>
#include <QPushButton>

void MainWindow::ConnectSnapshot()
{
    connect(m_editor->SnapshotButton(), &QPushButton::clicked, this, &MainWindow::StartSnapshot);
    connect(&m_countdown, &SnapshotCountdown::Counted, m_editor->SnapshotButton(), &QPushButton::setText);
    connect(&m_countdown, &SnapshotCountdown::Finished, this, [this] {
        m_heldKeys->SetSwallowing(false);
        CaptureKeyboard(m_activeButton);
    });
    connect(m_heldKeys, &HeldKeys::TakeBackPressed, this, &MainWindow::EndSnapshot);
}

void MainWindow::StartSnapshot()
{
    if (m_countdown.IsCounting())
        return;
    // A key button losing the focus as they are disabled would pass it, and
    // with it the selection, on to the next one.
    m_editor->SnapshotButton()->setFocus();
    m_keypad->SetKeyButtonsEnabled(false);
    m_editor->SetMessage(LanguageText(EditorText::PressKeys), false);
    m_heldKeys->SetSwallowing(true);
    m_editMenu->SetPaused(true);
    m_shortcuts->Inhibit(windowHandle());
    m_countdown.Start();
}

void MainWindow::CaptureKeyboard(int index)
{
    QApplication::beep();
    const KeyboardState state = m_heldKeys->Snapshot();
    KeyAction action = m_document->Action(index);
    action.IsMouse = false;
    const bool found = ::CaptureKeyboard(action, state);
    if (!IsUndoOrRedoChord(action))
        m_document->SetAction(index, action);
    const bool chordsKept = m_shortcuts->MayKeepChords();
    EndSnapshot();
    if (chordsKept)
        m_editor->SetMessage(LanguageText(EditorText::ChordsKeptByDesktop), false);
    // A held key the phone cannot send is named as such.
    if (!found && HoldsUnsupportedKey(state))
        m_editor->SetMessage(LanguageText(EditorText::KeyNotSupported), true);
}

void MainWindow::EndSnapshot()
{
    m_countdown.Stop();
    m_shortcuts->Release();
    m_heldKeys->SetSwallowing(false);
    m_editMenu->SetPaused(false);
    m_editor->SnapshotButton()->setText(LanguageText(EditorText::ButtonSnapshot));
    m_keypad->SetKeyButtonsEnabled(true);
    RefreshKeyDisplay(-1);
    UpdateToolTip(0);
}
