// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPainter>
#include <QPointF>
#include <QSize>
#include <QtMath>

class QWidget;

// Where a widget's drawing lands on the device: how many device pixels a pixel
// covers (the screen's ratio, or the scale of a rendering into a larger image)
// and how far the widget's origin lies past a whole device pixel, which is more
// than nothing at fractional ratios. Drawings kept as images are drawn with that
// offset and put down on whole device pixels, so they land exactly where
// painting directly would have put them.
struct DevicePlacement
{
    qreal Ratio = 1;
    QPointF Fraction;

    bool operator==(const DevicePlacement &) const = default;
};

// Where the painter's drawing lands.
DevicePlacement PlacementOf(const QPainter &painter);
// Where the widget lands when its window is painted at that ratio.
DevicePlacement PlacementOf(const QWidget &widget, qreal ratio);

// A drawing of a widget's size kept as an image: paint(QPainter &) draws it in
// the widget's coordinates, placed as at says. Null for an empty size.
template<typename Paint>
QImage RenderPlaced(QSize size, const DevicePlacement &at, Paint paint)
{
    const QSize pixels(qCeil(size.width() * at.Ratio + at.Fraction.x()),
                       qCeil(size.height() * at.Ratio + at.Fraction.y()));
    if (size.isEmpty() || pixels.isEmpty())
        return {};
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(at.Ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(at.Fraction / at.Ratio);
    paint(painter);
    painter.end();
    return image;
}

// Where such an image is drawn, in the widget's coordinates.
QPointF PlacedOrigin(const DevicePlacement &at);
