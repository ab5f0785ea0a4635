// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/deviceplacement.h"

#include <QTransform>
#include <QWidget>

#include <cmath>

namespace {

DevicePlacement Placement(qreal ratio, QPointF origin)
{
    const auto fraction = [](qreal at) {
        // In steps of 1/64, so that the same place always gives the same value.
        const qreal step = std::round((at - std::floor(at)) * 64) / 64;
        return step >= 1 ? 0.0 : step;
    };
    return {ratio > 0 ? ratio : 1, QPointF(fraction(origin.x()), fraction(origin.y()))};
}

} // namespace

DevicePlacement PlacementOf(const QPainter &painter)
{
    const QTransform &transform = painter.deviceTransform();
    return Placement(std::sqrt(std::abs(transform.determinant())), transform.map(QPointF(0, 0)));
}

DevicePlacement PlacementOf(const QWidget &widget, qreal ratio)
{
    return Placement(ratio, QPointF(widget.mapTo(widget.window(), QPoint(0, 0))) * ratio);
}

QPointF PlacedOrigin(const DevicePlacement &at)
{
    return -at.Fraction / at.Ratio;
}
