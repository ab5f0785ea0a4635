// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QRectF>

#include <algorithm>

// Small shapes that the key symbols and the movement arrows are made of.

inline QPainterPath Triangle(QPointF a, QPointF b, QPointF c)
{
    QPainterPath path(a);
    path.lineTo(b);
    path.lineTo(c);
    path.closeSubpath();
    return path;
}

// A square of the rect's shorter side, centred in it.
inline QRectF Square(const QRectF &rect)
{
    const qreal side = std::min(rect.width(), rect.height());
    return QRectF(rect.center().x() - side / 2, rect.center().y() - side / 2, side, side);
}

// Fills the path; a pen of the same colour, roundness wide, rounds its corners
// (0 leaves them sharp).
inline void FillSmooth(QPainter &painter, const QPainterPath &path, const QColor &colour, qreal roundness)
{
    QPen pen(colour, roundness, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(roundness > 0 ? pen : QPen(Qt::NoPen));
    painter.setBrush(colour);
    painter.drawPath(path);
}
