// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

// The seconds the Snapshot button gives the user to hold the chord down: it
// counts "3...", "2...", "1..." one second apart, and a second after "1..."
// the keyboard is to be read.
class SnapshotCountdown : public QObject
{
    Q_OBJECT

public:
    explicit SnapshotCountdown(QObject *parent = nullptr);

    // Starts at "3..."; does nothing while counting.
    void Start();
    // Ends the countdown without Finished.
    void Stop() { m_timer.stop(); }
    bool IsCounting() const { return m_timer.isActive(); }

signals:
    // The button's caption for the second that begins.
    void Counted(const QString &caption);
    // The time is up; the countdown is over.
    void Finished();

private:
    void Tick();

    QTimer m_timer;
    int m_ticks = 0;
};
