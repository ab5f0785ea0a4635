// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class QWindow;

// A Wayland compositor acts on the chords it binds (Super+..., Ctrl+Alt+T)
// and never sends them to the window, so a keyboard snapshot would not see
// them. While the snapshot waits for its chord, the compositor is asked to pass
// every key of the seat to the window (keyboard-shortcuts-inhibit protocol).
// Under X11 and Windows the window sees what it sees and nothing is asked.
class ShortcutsInhibitor : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Off, // nothing asked: released, or not under Wayland
        Asked, // asked; the compositor has not let the keys through (yet)
        Active, // the compositor passes every key to the window
        Refused, // the compositor keeps its shortcuts or offers no way to ask
    };

    explicit ShortcutsInhibitor(QObject *parent = nullptr);
    ~ShortcutsInhibitor() override;

    // Asks the compositor to pass every key to the window until Release.
    // Does nothing outside Wayland or while already asked.
    void Inhibit(QWindow *window);
    // Gives the compositor its shortcuts back.
    void Release();

    State CurrentState() const { return m_state; }
    // Whether the compositor may be keeping chords from the window now: asked
    // under Wayland and not (or no longer) passing every key.
    bool MayKeepChords() const { return m_state == State::Asked || m_state == State::Refused; }

signals:
    void StateChanged(ShortcutsInhibitor::State state);

private:
    void SetState(State state);

    struct Wayland;
    std::unique_ptr<Wayland> m_wayland;
    State m_state = State::Off;
};
