// SPDX-License-Identifier: GPL-3.0-or-later
#include "phoneart/phonegeometry.h"

#include <QTransform>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

// The body is 100 units wide and 230 high, its top left corner at the origin.
const QRectF DesignArea(-9, -3, 118, 240);
const QRectF BodyRect(0, 0, 100, 230);
const QRectF GlassRect(9, 13, 82, 99);
const QRectF DisplayRect(14, 18, 72, 90); // 4:5, like the phones' own displays

const QPointF JoystickCentre(50, 131);
const qreal JoystickRadius = 15.5;
const qreal JoystickPressRadius = 5.6;
// The four directions are arms of a cross within the ring, clear of the press in
// the middle and of each other.
const qreal ArmInner = 6.9;
const qreal ArmOuter = 14.0;
const qreal ArmHalfWidth = 6.3;

const QRectF LeftSoftKey(5.5, 116, 30.3, 29);
const qreal SoftKeyHollow = 17.8; // the soft keys curve around the joystick

const qreal DigitLeft = 7;
const qreal DigitTop = 152;
const qreal DigitWidth = 26;
const qreal DigitHeight = 14.2;
const qreal DigitColumnPitch = 30;
const qreal DigitRowPitch = 17;

const qreal SideKeyDepth = 7; // how far the side keys stand out of the body
const QRectF VolumeUpSlot(100, 33, SideKeyDepth, 14);
const QRectF VolumeDownSlot(100, 50, SideKeyDepth, 14);
const QRectF CameraSlot(100, 160, SideKeyDepth, 17);

// Room around a cap for its shadow and the focus ring.
const qreal CapMargin = 1.2;

struct KeyShape
{
    QRectF Cap; // in design units
    QPainterPath Face; // in design units
    QRectF Content; // in design units
};

QRectF CentredSquare(QPointF centre, qreal side)
{
    return QRectF(centre.x() - side / 2, centre.y() - side / 2, side, side);
}

KeyShape ShapeOf(PhoneKey index)
{
    KeyShape shape;
    switch (KeyCapStyleOf(index)) {
    case KeyCapStyle::SoftKey: {
        const bool left = index == PhoneKeys::Lsk;
        shape.Cap = left ? LeftSoftKey
                         : QRectF(BodyRect.width() - LeftSoftKey.right(), LeftSoftKey.top(), LeftSoftKey.width(),
                                  LeftSoftKey.height());
        const QRectF cap = shape.Cap.adjusted(CapMargin, CapMargin, -CapMargin, -CapMargin);
        QPainterPath rounded;
        rounded.addRoundedRect(cap, 5, 5);
        QPainterPath hollow;
        hollow.addEllipse(JoystickCentre, SoftKeyHollow, SoftKeyHollow);
        shape.Face = rounded.subtracted(hollow);
        const qreal bite = left ? cap.right() - (JoystickCentre.x() - SoftKeyHollow)
                                : JoystickCentre.x() + SoftKeyHollow - cap.left();
        shape.Content = left ? cap.adjusted(0, 0, -bite, 0) : cap.adjusted(bite, 0, 0, 0);
        break;
    }
    case KeyCapStyle::JoystickPress:
        shape.Cap = CentredSquare(JoystickCentre, 2 * (JoystickPressRadius + 0.7));
        shape.Face.addEllipse(JoystickCentre, JoystickPressRadius, JoystickPressRadius);
        shape.Content = CentredSquare(JoystickCentre, 1.05 * JoystickPressRadius);
        break;
    case KeyCapStyle::JoystickDirection: {
        // The arm pointing right, turned into place.
        const QRectF arm(ArmInner, -ArmHalfWidth, ArmOuter - ArmInner, 2 * ArmHalfWidth);
        const qreal degrees = index == PhoneKeys::Left    ? 180
                              : index == PhoneKeys::Up    ? 270
                              : index == PhoneKeys::Right ? 0
                                                          : 90;
        QTransform turn;
        turn.translate(JoystickCentre.x(), JoystickCentre.y());
        turn.rotate(degrees);
        shape.Cap = turn.mapRect(arm);
        // The lit part: a segment of the ring as wide as the arm allows.
        const qreal inner = ArmInner + 0.5;
        const qreal outer = ArmOuter - 0.3;
        const qreal sweep = 2 * qRadiansToDegrees(std::asin((ArmHalfWidth - 0.4) / outer));
        QPainterPath band;
        band.arcMoveTo(QRectF(-outer, -outer, 2 * outer, 2 * outer), -sweep / 2);
        band.arcTo(QRectF(-outer, -outer, 2 * outer, 2 * outer), -sweep / 2, sweep);
        band.arcTo(QRectF(-inner, -inner, 2 * inner, 2 * inner), sweep / 2, -sweep);
        band.closeSubpath();
        shape.Face = turn.map(band);
        const qreal middle = (ArmInner + ArmOuter) / 2;
        shape.Content = turn.mapRect(CentredSquare(QPointF(middle, 0), 4.6));
        break;
    }
    case KeyCapStyle::SideKey: {
        const QRectF slot = index == PhoneKeys::VolUp     ? VolumeUpSlot
                            : index == PhoneKeys::VolDown ? VolumeDownSlot
                                                          : CameraSlot;
        shape.Cap = slot.adjusted(0, -CapMargin, CapMargin, CapMargin);
        // Square where it leaves the body, rounded outside.
        const qreal r = 1.8;
        QPainterPath tab;
        tab.addRoundedRect(slot.adjusted(-2 * r, 0, 0, 0), r, r);
        QPainterPath inside;
        inside.addRect(slot);
        shape.Face = tab.intersected(inside);
        shape.Content = CentredSquare(slot.center() - QPointF(0.2, 0), 0.74 * SideKeyDepth);
        break;
    }
    case KeyCapStyle::Digit: {
        const int position = index - PhoneKeys::Digit1; // 0..11: 1..9, *, 0, #
        const QRectF cap(DigitLeft + (position % 3) * DigitColumnPitch, DigitTop + (position / 3) * DigitRowPitch,
                         DigitWidth, DigitHeight);
        shape.Cap = cap.adjusted(-CapMargin, -CapMargin, CapMargin, CapMargin);
        shape.Face.addRoundedRect(cap, 4, 4);
        shape.Content = cap;
        break;
    }
    }
    return shape;
}

// Whole pixels, each edge rounded on its own, so that rectangles that do not
// overlap in design units do not overlap on screen either.
QRect PixelRect(const QRectF &rect)
{
    const QPoint topLeft(qRound(rect.left()), qRound(rect.top()));
    const QPoint bottomRight(qRound(rect.right()), qRound(rect.bottom()));
    return QRect(topLeft, bottomRight - QPoint(1, 1));
}

} // namespace

KeyCapStyle KeyCapStyleOf(PhoneKey key)
{
    switch (key) {
    case PhoneKeys::Lsk:
    case PhoneKeys::Rsk:
        return KeyCapStyle::SoftKey;
    case PhoneKeys::Joy:
        return KeyCapStyle::JoystickPress;
    case PhoneKeys::Left:
    case PhoneKeys::Up:
    case PhoneKeys::Right:
    case PhoneKeys::Down:
        return KeyCapStyle::JoystickDirection;
    case PhoneKeys::VolUp:
    case PhoneKeys::VolDown:
    case PhoneKeys::Cam:
        return KeyCapStyle::SideKey;
    default:
        return KeyCapStyle::Digit;
    }
}

QSizeF PhoneDesignSize()
{
    return DesignArea.size();
}

PhoneLayout LayOutPhone(QSize size)
{
    const qreal scale = std::min(size.width() / DesignArea.width(), size.height() / DesignArea.height());
    const QPointF origin = QRectF(QPointF(0, 0), QSizeF(size)).center() - DesignArea.center() * scale;
    QTransform toWidget;
    toWidget.translate(origin.x(), origin.y());
    toWidget.scale(scale, scale);

    PhoneLayout layout;
    // The digit keys all take the outline of the first, moved by whole pixels: so
    // they look exactly alike, and share one drawing of their cap.
    const KeyShape firstDigit = ShapeOf(PhoneKeys::Digit1);
    const QRect firstDigitGeometry = PixelRect(toWidget.mapRect(firstDigit.Cap));
    const QTransform toFirstDigit = toWidget
                                    * QTransform::fromTranslate(-firstDigitGeometry.left(), -firstDigitGeometry.top());
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        PhoneLayout::Key &placed = layout.Keys.at(static_cast<std::size_t>(key));
        if (KeyCapStyleOf(key) == KeyCapStyle::Digit) {
            const int position = key - PhoneKeys::Digit1;
            const QPoint offset(qRound((position % 3) * DigitColumnPitch * scale),
                                qRound((position / 3) * DigitRowPitch * scale));
            placed = {firstDigitGeometry.translated(offset), toFirstDigit.map(firstDigit.Face),
                      toFirstDigit.mapRect(firstDigit.Content)};
            continue;
        }
        const KeyShape shape = ShapeOf(key);
        const QRect geometry = PixelRect(toWidget.mapRect(shape.Cap));
        const QTransform toButton = toWidget * QTransform::fromTranslate(-geometry.left(), -geometry.top());
        placed = {geometry, toButton.map(shape.Face), toButton.mapRect(shape.Content)};
    }

    layout.Display = PixelRect(toWidget.mapRect(DisplayRect));
    layout.Art.Body = toWidget.mapRect(BodyRect);
    layout.Art.Glass = toWidget.mapRect(GlassRect);
    layout.Art.Display = layout.Display;
    layout.Art.JoystickCentre = toWidget.map(JoystickCentre);
    layout.Art.JoystickRadius = JoystickRadius * scale;
    layout.Art.SideKeys = {toWidget.mapRect(VolumeUpSlot), toWidget.mapRect(VolumeDownSlot),
                           toWidget.mapRect(CameraSlot)};
    layout.Art.Unit = scale;
    return layout;
}
