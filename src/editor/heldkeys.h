// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keyboardcapture.h"

#include <QObject>
#include <QSet>

class QKeyEvent;

// The Windows virtual-key code of a key event, with left and right Shift,
// Ctrl, Alt and Windows told apart; 0 for a key without one. Uses the native
// key code where the platform gives one, otherwise the key's position (scan
// code) for the digit row and punctuation and Qt's key for the rest.
int VirtualKeyOf(const QKeyEvent &event);

// Keeps track of the keys held while the application has a focused window, as
// the keyboard snapshot of the capture needs them. While swallowing, key events
// are kept from the widgets (so that a held Space does not press a button).
class HeldKeys : public QObject
{
    Q_OBJECT

public:
    explicit HeldKeys(QObject *parent = nullptr);

    KeyboardState Snapshot() const;
    void SetSwallowing(bool swallow) { m_swallow = swallow; }
    void Clear() { m_held.clear(); }

    // For tests and for platforms that report no releases: press and release.
    void Press(int virtualKey) { m_held.insert(virtualKey); }
    void Release(int virtualKey) { m_held.remove(virtualKey); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QSet<int> m_held;
    bool m_swallow = false;
};
