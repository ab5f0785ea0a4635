// SPDX-License-Identifier: GPL-3.0-or-later
#include "phoneart/phoneart.h"

#include "phoneart/artshapes.h"

#include <QPainter>
#include <QPalette>
#include <QRadialGradient>

#include <algorithm>

namespace {

// The phone keeps its own colours in any palette: a graphite front in a satin
// silver frame reads on light and on dark windows alike. Only the accent of the
// selected and focused key comes from the palette.
const QColor FaceTop(0x41, 0x47, 0x50);
const QColor FaceBottom(0x20, 0x24, 0x29);
const QColor GlassColour(0x05, 0x06, 0x08);
const QColor DisplayColour(0x0c, 0x10, 0x15);
const QColor CapTop(0x5a, 0x61, 0x6b);
const QColor CapBottom(0x3b, 0x41, 0x48);
const QColor CapEdge(0x14, 0x17, 0x1a);
const QColor CapInk(0xf3, 0xf5, 0xf8);
const QColor CapInkSecondary(0xa3, 0xad, 0xb9);
const QColor MetalInk(0x2c, 0x31, 0x37);

QColor Mix(const QColor &a, const QColor &b, qreal t)
{
    return QColor::fromRgbF(static_cast<float>(a.redF() + (b.redF() - a.redF()) * t),
                            static_cast<float>(a.greenF() + (b.greenF() - a.greenF()) * t),
                            static_cast<float>(a.blueF() + (b.blueF() - a.blueF()) * t),
                            static_cast<float>(a.alphaF() + (b.alphaF() - a.alphaF()) * t));
}

QColor WithAlpha(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}

// Brushed metal across the given span, for the frame and the side keys.
QLinearGradient Metal(QPointF from, QPointF to, qreal brightness = 1.0)
{
    auto shade = [brightness](int grey) {
        const int value = std::clamp(static_cast<int>(grey * brightness), 0, 255);
        return QColor(value, value + 2 > 255 ? 255 : value + 2, value + 6 > 255 ? 255 : value + 6);
    };
    QLinearGradient gradient(from, to);
    gradient.setColorAt(0.0, shade(112));
    gradient.setColorAt(0.06, shade(206));
    gradient.setColorAt(0.22, shade(178));
    gradient.setColorAt(0.55, shade(158));
    gradient.setColorAt(0.88, shade(214));
    gradient.setColorAt(1.0, shade(104));
    return gradient;
}

QPainterPath CameraGlyph(const QRectF &square)
{
    const qreal s = square.width();
    const QRectF body(square.left() + 0.06 * s, square.top() + 0.3 * s, 0.88 * s, 0.56 * s);
    QPainterPath shape;
    shape.addRoundedRect(body, 0.1 * s, 0.1 * s);
    QPainterPath hump;
    hump.addRoundedRect(QRectF(square.left() + 0.3 * s, square.top() + 0.18 * s, 0.4 * s, 0.2 * s), 0.06 * s,
                        0.06 * s);
    shape = shape.united(hump);
    const QPointF lens(body.center().x(), body.center().y() + 0.02 * s);
    QPainterPath ring;
    ring.addEllipse(lens, 0.2 * s, 0.2 * s);
    QPainterPath pupil;
    pupil.addEllipse(lens, 0.11 * s, 0.11 * s);
    return shape.subtracted(ring).united(pupil);
}

} // namespace

void PaintKeySymbol(QPainter &painter, const QRectF &rect, KeySymbol symbol, const QColor &colour)
{
    const QRectF square = Square(rect);
    const qreal s = square.width();
    const QPointF c = square.center();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    switch (symbol) {
    case KeySymbol::None:
        break;
    case KeySymbol::JoystickPress: {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colour, 0.11 * s));
        painter.drawEllipse(c, 0.36 * s, 0.36 * s);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawEllipse(c, 0.15 * s, 0.15 * s);
        break;
    }
    case KeySymbol::ArrowLeft:
    case KeySymbol::ArrowUp:
    case KeySymbol::ArrowRight:
    case KeySymbol::ArrowDown: {
        // Drawn pointing right, then turned.
        const qreal degrees = symbol == KeySymbol::ArrowLeft    ? 180
                              : symbol == KeySymbol::ArrowUp    ? 270
                              : symbol == KeySymbol::ArrowRight ? 0
                                                                : 90;
        painter.translate(c);
        painter.rotate(degrees);
        const qreal round = 0.1 * s;
        FillSmooth(painter,
                   Triangle(QPointF(0.36 * s - round / 2, 0), QPointF(-0.24 * s + round / 2, -0.38 * s + round),
                            QPointF(-0.24 * s + round / 2, 0.38 * s - round)),
                   colour, round);
        break;
    }
    case KeySymbol::Plus:
    case KeySymbol::Minus: {
        painter.setPen(QPen(colour, 0.16 * s, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(c.x() - 0.34 * s, c.y()), QPointF(c.x() + 0.34 * s, c.y()));
        if (symbol == KeySymbol::Plus)
            painter.drawLine(QPointF(c.x(), c.y() - 0.34 * s), QPointF(c.x(), c.y() + 0.34 * s));
        break;
    }
    case KeySymbol::Camera:
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawPath(CameraGlyph(square));
        break;
    }
    painter.restore();
}

QColor KeyAccent(const QPalette &palette)
{
    QColor accent = palette.color(QPalette::Active, QPalette::Highlight).toHsl();
    if (accent.lightness() < 150)
        accent.setHsl(accent.hslHue(), accent.hslSaturation(), 150);
    return accent.toRgb();
}

QLinearGradient GlassGloss(const QRectF &glass)
{
    QLinearGradient gloss(glass.topLeft(), QPointF(glass.left() + glass.width() * 0.62, glass.bottom()));
    gloss.setColorAt(0.0, QColor(255, 255, 255, 30));
    gloss.setColorAt(0.42, QColor(255, 255, 255, 14));
    gloss.setColorAt(0.4201, QColor(255, 255, 255, 5));
    gloss.setColorAt(1.0, QColor(255, 255, 255, 0));
    return gloss;
}

void PaintPhoneBody(QPainter &painter, const PhoneBodyArt &art, const QPalette &palette)
{
    const qreal u = art.Unit;
    const QRectF body = art.Body;
    const qreal radius = 15 * u;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    // A soft shadow below the body: widening layers of faint black.
    const bool darkWindow = palette.color(QPalette::Active, QPalette::Window).lightness() < 128;
    const int layers = 8;
    for (int layer = layers; layer >= 1; --layer) {
        const qreal grow = layer * 0.5 * u;
        painter.setBrush(QColor(0, 0, 0, darkWindow ? 16 : 8));
        painter.drawRoundedRect(body.adjusted(-grow, -grow + 2.0 * u, grow, grow + 2.0 * u), radius + grow,
                                radius + grow);
    }

    // The frame: satin metal, light catching its two long edges.
    painter.setBrush(Metal(body.topLeft(), body.topRight()));
    painter.drawRoundedRect(body, radius, radius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 110), std::max(1.0, 0.35 * u)));
    painter.drawRoundedRect(body, radius, radius);
    // The slots in the frame from which the side keys stand out.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x16, 0x19, 0x1c));
    for (const QRectF &slot : art.SideKeys)
        painter.drawRoundedRect(QRectF(slot.left() - 1.3 * u, slot.top() - 0.5 * u, 1.6 * u, slot.height() + 1.0 * u),
                                0.6 * u, 0.6 * u);

    // The front: graphite, a touch lighter at the top, with a broad soft sheen.
    const qreal rim = 2.3 * u;
    const QRectF face = body.adjusted(rim, rim, -rim, -rim);
    const qreal faceRadius = radius - rim;
    QLinearGradient faceGradient(face.topLeft(), face.bottomLeft());
    faceGradient.setColorAt(0.0, FaceTop);
    faceGradient.setColorAt(0.5, Mix(FaceTop, FaceBottom, 0.55));
    faceGradient.setColorAt(1.0, FaceBottom);
    painter.setPen(Qt::NoPen);
    painter.setBrush(faceGradient);
    painter.drawRoundedRect(face, faceRadius, faceRadius);
    QRadialGradient sheen(QPointF(face.left() + face.width() * 0.3, face.top()), face.width() * 0.95);
    sheen.setColorAt(0.0, QColor(255, 255, 255, 26));
    sheen.setColorAt(1.0, QColor(255, 255, 255, 0));
    painter.setBrush(sheen);
    painter.drawRoundedRect(face, faceRadius, faceRadius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 150), std::max(1.0, 0.4 * u)));
    painter.drawRoundedRect(face, faceRadius, faceRadius);
    painter.setPen(QPen(QColor(255, 255, 255, 28), std::max(1.0, 0.3 * u)));
    painter.drawRoundedRect(face.adjusted(0.5 * u, 0.5 * u, -0.5 * u, -0.5 * u), faceRadius - 0.5 * u,
                            faceRadius - 0.5 * u);

    // Earpiece and the small front lens beside it.
    const qreal earY = face.top() + 4.6 * u;
    const QRectF earpiece(body.center().x() - 11 * u, earY - 1.2 * u, 22 * u, 2.4 * u);
    painter.setPen(QPen(QColor(255, 255, 255, 40), std::max(1.0, 0.3 * u)));
    painter.setBrush(QColor(0x0e, 0x10, 0x13));
    painter.drawRoundedRect(earpiece, 1.2 * u, 1.2 * u);
    const QPointF lens(body.center().x() + 20 * u, earY);
    painter.setBrush(QColor(0x0a, 0x0c, 0x10));
    painter.drawEllipse(lens, 1.5 * u, 1.5 * u);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x4a, 0x6f, 0x9a, 150));
    painter.drawEllipse(lens + QPointF(-0.45 * u, -0.45 * u), 0.5 * u, 0.5 * u);

    // Microphone slit at the bottom.
    const QRectF mic(body.center().x() - 4 * u, face.bottom() - 5.5 * u, 8 * u, 1.3 * u);
    painter.setPen(QPen(QColor(255, 255, 255, 32), std::max(1.0, 0.25 * u)));
    painter.setBrush(QColor(0x0e, 0x10, 0x13));
    painter.drawRoundedRect(mic, 0.65 * u, 0.65 * u);

    // The glass, the darker display under it, and its reflection.
    const qreal glassRadius = 3.2 * u;
    painter.setPen(QPen(QColor(255, 255, 255, 34), std::max(1.0, 0.35 * u)));
    painter.setBrush(GlassColour);
    painter.drawRoundedRect(art.Glass, glassRadius, glassRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(DisplayColour);
    painter.drawRect(art.Display);
    painter.setBrush(GlassGloss(art.Glass));
    painter.drawRoundedRect(art.Glass, glassRadius, glassRadius);

    // The joystick's ring: a metal collar around a dark dish.
    const QPointF centre = art.JoystickCentre;
    const qreal outer = art.JoystickRadius;
    painter.setBrush(QColor(0, 0, 0, 90));
    painter.drawEllipse(centre + QPointF(0, 0.5 * u), outer + 1.6 * u, outer + 1.6 * u);
    painter.setBrush(Metal(centre - QPointF(outer, outer), centre + QPointF(outer, outer), 0.95));
    painter.drawEllipse(centre, outer + 1.3 * u, outer + 1.3 * u);
    QLinearGradient dish(centre - QPointF(0, outer), centre + QPointF(0, outer));
    dish.setColorAt(0.0, QColor(0x2b, 0x30, 0x36));
    dish.setColorAt(1.0, QColor(0x3d, 0x43, 0x4b));
    painter.setBrush(dish);
    painter.drawEllipse(centre, outer, outer);
    painter.restore();
}

QColor KeyCapInk(KeyCapStyle style, const KeyCapState &state, const QPalette &palette, bool secondary)
{
    QColor ink;
    switch (style) {
    case KeyCapStyle::Digit:
    case KeyCapStyle::SoftKey:
        ink = secondary ? CapInkSecondary : CapInk;
        if (state.Down)
            ink = secondary ? QColor(0xdc, 0xe4, 0xee) : QColor(Qt::white);
        break;
    case KeyCapStyle::JoystickDirection:
        ink = state.Down      ? KeyAccent(palette).lighter(130)
              : state.Hovered ? QColor(Qt::white)
                              : QColor(0xb8, 0xc0, 0xca);
        break;
    case KeyCapStyle::JoystickPress:
    case KeyCapStyle::SideKey:
        ink = MetalInk;
        break;
    }
    if (!state.Enabled)
        ink.setAlpha(110);
    return ink;
}

void PaintKeyCap(QPainter &painter, const QPainterPath &face, KeyCapStyle style, const KeyCapState &state,
                 const QPalette &palette, qreal unit)
{
    const qreal u = unit;
    const QColor accent = KeyAccent(palette);
    const QRectF box = face.boundingRect();
    const qreal hairline = std::max(1.0, 0.3 * u);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);

    switch (style) {
    case KeyCapStyle::Digit:
    case KeyCapStyle::SoftKey: {
        // The cap sits on a little shadow; pressed, it sinks onto it.
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, state.Down ? 60 : 110));
        painter.drawPath(face.translated(0, state.Down ? 0.3 * u : 0.7 * u));
        QColor top = CapTop;
        QColor bottom = CapBottom;
        if (state.Down) {
            top = Mix(CapBottom, accent, 0.45);
            bottom = Mix(CapTop, accent, 0.6);
        } else if (state.Hovered && state.Enabled) {
            top = CapTop.lighter(124);
            bottom = CapBottom.lighter(124);
        }
        QLinearGradient fill(box.topLeft(), box.bottomLeft());
        fill.setColorAt(0.0, top);
        fill.setColorAt(1.0, bottom);
        painter.setBrush(fill);
        painter.setPen(QPen(CapEdge, hairline));
        painter.drawPath(face);
        // Light on the upper edge of the cap.
        QLinearGradient edge(box.topLeft(), box.bottomLeft());
        edge.setColorAt(0.0, QColor(255, 255, 255, state.Down ? 40 : 80));
        edge.setColorAt(0.5, QColor(255, 255, 255, 0));
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QBrush(edge), hairline));
        const qreal inset = hairline;
        QTransform shrink;
        shrink.translate(box.center().x(), box.center().y());
        shrink.scale((box.width() - 2 * inset) / box.width(), (box.height() - 2 * inset) / box.height());
        shrink.translate(-box.center().x(), -box.center().y());
        painter.drawPath(shrink.map(face));
        if (state.Down) {
            painter.setPen(QPen(WithAlpha(accent, 200), hairline));
            painter.drawPath(face);
        }
        break;
    }
    case KeyCapStyle::JoystickDirection: {
        if (state.Down || (state.Hovered && state.Enabled)) {
            QRadialGradient glow(box.center(), std::max(box.width(), box.height()) * 0.7);
            const QColor colour = state.Down ? accent : QColor(255, 255, 255);
            glow.setColorAt(0.0, WithAlpha(colour, state.Down ? 170 : 46));
            glow.setColorAt(1.0, WithAlpha(colour, state.Down ? 90 : 20));
            painter.setPen(state.Down ? QPen(WithAlpha(accent.lighter(120), 220), hairline) : Qt::NoPen);
            painter.setBrush(glow);
            painter.drawPath(face);
        }
        break;
    }
    case KeyCapStyle::JoystickPress: {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 120));
        painter.drawPath(face.translated(0, 0.5 * u));
        QRadialGradient dome(QPointF(box.center().x() - box.width() * 0.15, box.top() + box.height() * 0.25),
                             box.width() * 0.9);
        QColor light(0xf4, 0xf6, 0xf9);
        QColor dark(0x8d, 0x95, 0x9f);
        if (state.Down) {
            light = Mix(light, accent, 0.35);
            dark = Mix(dark, accent, 0.55);
        } else if (state.Hovered && state.Enabled) {
            light = Qt::white;
            dark = dark.lighter(112);
        }
        dome.setColorAt(0.0, light);
        dome.setColorAt(1.0, dark);
        painter.setBrush(dome);
        painter.setPen(QPen(QColor(0x4b, 0x52, 0x5a), hairline));
        painter.drawPath(face);
        break;
    }
    case KeyCapStyle::SideKey: {
        painter.setPen(QPen(QColor(0, 0, 0, 140), hairline));
        QLinearGradient metal = Metal(box.topLeft(), box.topRight(), state.Hovered && state.Enabled ? 1.08 : 1.0);
        painter.setBrush(metal);
        painter.drawPath(face);
        if (state.Down) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(WithAlpha(accent, 130));
            painter.drawPath(face);
        }
        break;
    }
    }

    if (state.Focused) {
        const qreal width = std::max(1.5, 0.6 * u);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(accent, width));
        if (style == KeyCapStyle::JoystickDirection) {
            const qreal radius = std::min(box.width(), box.height()) * 0.38;
            painter.drawEllipse(box.center(), radius, radius);
        } else {
            QPainterPathStroker stroker;
            stroker.setWidth(1.6 * width);
            painter.drawPath(face.united(stroker.createStroke(face)));
        }
    }
    painter.restore();
}
