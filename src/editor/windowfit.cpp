// SPDX-License-Identifier: GPL-3.0-or-later
#include "windowfit.h"

#include <QLayout>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace {

// What a window manager's frame and title bar take at most, in pixels.
constexpr QSize FrameAllowance(16, 48);

QSize RoomOnScreen(const QWidget &window)
{
    const QScreen *screen = window.screen();
    return screen ? screen->availableSize() - FrameAllowance : QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
}

} // namespace

QSize OpeningSize(const QWidget &window)
{
    return window.sizeHint().boundedTo(RoomOnScreen(window)).expandedTo(window.minimumSizeHint());
}

void KeepWidthForTexts(QWidget &widget, const QStringList &texts, const std::function<void(const QString &)> &show,
                       const QString &shown)
{
    widget.setMinimumWidth(0);
    int widest = 0;
    for (const QString &text : texts) {
        show(text);
        widest = std::max(widest, widget.minimumSizeHint().width());
    }
    show(shown);
    widget.setMinimumWidth(widest);
}

void GrowToKeepWidth(QWidget &window, const QWidget &part, int width)
{
    if (!window.isVisible())
        return;
    // The layout takes the new sizes of the part's neighbours now, not when its
    // events come.
    if (QLayout *layout = part.parentWidget() ? part.parentWidget()->layout() : nullptr)
        layout->activate();
    const int lost = width - part.width();
    if (lost > 0)
        window.resize(std::min(window.width() + lost, RoomOnScreen(window).width()), window.height());
}
