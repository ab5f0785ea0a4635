// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>

class QPainter;
class QPalette;

// The arrows of the mouse movements, drawn with QPainter in floating point, so
// they are sharp at any size and device pixel ratio.

// An arrow for a mouse movement 2..9 (2 left, 3 up-left, 4 up, 5 up-right, 6 right,
// 7 down-right, 8 down, 9 down-left), drawn in rect. Other values draw nothing.
void PaintMovementArrow(QPainter &painter, const QRectF &rect, int mouseAction, const QColor &colour);
// The same as an icon (crisp at any device pixel ratio), for QLabel/QToolButton use,
// in the palette's window text colour (its disabled and highlighted variants for
// the disabled and selected modes).
QIcon MovementArrowIcon(int mouseAction, const QPalette &palette);
