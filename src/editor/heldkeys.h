// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keyboardcapture.h"
#include "keymap/keymap.h"

#include <QHash>
#include <QObject>
#include <QSet>

#include <functional>
#include <optional>

class QKeyEvent;

// The Windows virtual-key code of a key event, with left and right Shift,
// Ctrl, Alt and Windows told apart; 0 for a key without one. Uses the native
// key code where the platform gives one, otherwise the key's position (scan
// code) for the digit row and punctuation and Qt's key for the rest.
int VirtualKeyOf(const QKeyEvent &event);

// Whether a keyboard action is one of the platform's Undo or Redo chords
// (Ctrl+Z, Ctrl+Y, Ctrl+Shift+Z, ...), either side's modifiers counting.
bool IsUndoOrRedoChord(const KeyAction &action);

// Keeps track of the keys held while the application has a focused window, as
// the keyboard snapshot of the capture needs them. While swallowing, key events
// are kept from the widgets (so that a held Space does not press a button).
//
// A key released while another window, a menu or another program has the
// keyboard sends no release here, so the held keys are forgotten whenever a
// window of the program loses the keyboard. Where the platform can tell which
// keys are down, the snapshot asks it as well.
class HeldKeys : public QObject
{
    Q_OBJECT

public:
    // The codes of the keys held down right now as the platform reports them
    // (X key codes, the scan codes of X11 key events; Windows virtual-key
    // codes); nothing where it cannot tell.
    using PlatformQuery = std::function<std::optional<QSet<quint32>>()>;

    // Asks the X server under X11 and the keyboard state under Windows.
    explicit HeldKeys(QObject *parent = nullptr);

    KeyboardState Snapshot() const;
    void SetSwallowing(bool swallow) { m_swallow = swallow; }
    void SetPlatformQuery(PlatformQuery query) { m_query = std::move(query); }
    void Clear()
    {
        m_held.clear();
        m_pressedWith.clear();
    }

    // For tests and for platforms that report no releases: press and release,
    // with the modifiers the key event carries.
    void Press(int virtualKey, Qt::KeyboardModifiers with = Qt::NoModifier)
    {
        m_held.insert(virtualKey, 0);
        m_pressedWith.insert(virtualKey, with);
    }
    void Release(int virtualKey)
    {
        m_held.remove(virtualKey);
        m_pressedWith.remove(virtualKey);
    }

signals:
    // Undo or Redo was pressed while swallowing. The Snapshot takes it as the
    // user's wish to take the capture back: a user who presses Ctrl+Z during
    // the countdown means to undo, and must neither find Ctrl+Z stored as the
    // key's chord nor have an older step undone under the capture.
    void TakeBackPressed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Held virtual keys with their platform codes (0 when unknown).
    QHash<int, quint32> m_held;
    // The modifiers each held key's press carried. Under Wayland they name
    // modifiers whose own press went elsewhere (held before the window had the
    // keyboard, or set by a virtual keyboard that sends no key for them).
    QHash<int, Qt::KeyboardModifiers> m_pressedWith;
    // The virtual key of every platform code seen so far, so that a key the
    // platform reports down can be named even when its press went elsewhere.
    QHash<quint32, int> m_learnt;
    PlatformQuery m_query;
    bool m_swallow = false;
};
