// SPDX-License-Identifier: GPL-3.0-or-later
#include "snapshotcountdown.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int TickInterval = 1000; // ms
constexpr int Seconds = 3;

} // namespace

SnapshotCountdown::SnapshotCountdown(QObject *parent) : QObject(parent)
{
    m_timer.setInterval(TickInterval);
    connect(&m_timer, &QTimer::timeout, this, &SnapshotCountdown::Tick);
}

void SnapshotCountdown::Start()
{
    if (m_timer.isActive())
        return;
    m_ticks = 0;
    emit Counted(u"%1..."_s.arg(Seconds));
    m_timer.start();
}

void SnapshotCountdown::Tick()
{
    ++m_ticks;
    if (m_ticks < Seconds) {
        emit Counted(u"%1..."_s.arg(Seconds - m_ticks));
        return;
    }
    m_timer.stop();
    emit Finished();
}
