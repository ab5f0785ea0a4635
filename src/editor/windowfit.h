// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <QStringList>

#include <functional>

class QWidget;

// Sizes that keep the phone large and steady: the window opens as large as it
// asks to be where the screen has room, and controls whose words change keep
// the width of their longest words, so the phone beside them keeps its size.

// The size a main window opens at: its size hint within the screen's free area,
// less room for the window's frame. (A window left to itself opens within two
// thirds of the screen, which makes the phone small on a small or scaled screen.)
QSize OpeningSize(const QWidget &window);

// The widget as wide as it needs to be for the widest of the texts it may
// show: show(text) puts each one in place; the text shown before is put back.
void KeepWidthForTexts(QWidget &widget, const QStringList &texts, const std::function<void(const QString &)> &show,
                       const QString &shown);

// Widens the window by as much as part has become narrower than width, as far
// as the screen has room.
void GrowToKeepWidth(QWidget &window, const QWidget &part, int width);
