// SPDX-License-Identifier: GPL-3.0-or-later
#include "phoneart/keyface.h"

#include "phoneart/phonegeometry.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPalette>

#include <algorithm>
#include <array>

namespace {

const qreal VoicemailWidth = 5.4;

// The usual letters of the digit keys 1..9, *, 0, #.
const std::array<QStringView, 12> DigitLetters = {
    u"", u"abc", u"def", u"ghi", u"jkl", u"mno", u"pqrs", u"tuv", u"wxyz", u"", u"+", u"",
};

KeySymbol SymbolOf(PhoneKey key)
{
    switch (key) {
    case PhoneKeys::Joy:
        return KeySymbol::JoystickPress;
    case PhoneKeys::Left:
        return KeySymbol::ArrowLeft;
    case PhoneKeys::Up:
        return KeySymbol::ArrowUp;
    case PhoneKeys::Right:
        return KeySymbol::ArrowRight;
    case PhoneKeys::Down:
        return KeySymbol::ArrowDown;
    case PhoneKeys::VolUp:
        return KeySymbol::Plus;
    case PhoneKeys::VolDown:
        return KeySymbol::Minus;
    case PhoneKeys::Cam:
        return KeySymbol::Camera;
    default:
        return KeySymbol::None;
    }
}

// The keys' texts are drawn in the one font given, scaled by the painter to the
// size wanted. Every size then shares the font the window already uses: each
// other size or weight would load a font of its own, and those loads were the
// larger part of the phone's first paint.
qreal TextScale(const KeyFaceText &text, qreal pixels)
{
    return text.FontPixels > 0 ? pixels / text.FontPixels : 1;
}

void DrawScaledText(QPainter &painter, QPointF baseline, qreal scale, const QString &text)
{
    painter.save();
    painter.translate(baseline);
    painter.scale(scale, scale);
    painter.drawText(QPointF(0, 0), text);
    painter.restore();
}

// The small mark of the voicemail key: two rings joined at the bottom.
void PaintVoicemailMark(QPainter &painter, const QRectF &rect, const QColor &colour)
{
    const qreal radius = rect.height() * 0.3;
    const qreal y = rect.center().y();
    const qreal left = rect.left() + radius;
    const qreal right = rect.right() - radius;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, rect.height() * 0.16));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(left, y), radius, radius);
    painter.drawEllipse(QPointF(right, y), radius, radius);
    painter.drawLine(QPointF(left, y + radius), QPointF(right, y + radius));
    painter.restore();
}

void PaintCaption(QPainter &painter, const QRectF &content, qreal unit, const QColor &ink, const KeyFaceText &text)
{
    if (text.Caption.isEmpty())
        return;
    const QRectF area = content.adjusted(1.2 * unit, 0, -1.2 * unit, 0);
    qreal scale = TextScale(text, 5.4 * unit);
    // Long captions of other languages shrink to fit.
    QString plain = text.Caption;
    plain.remove(u'&');
    const qreal width = QFontMetricsF(text.Font).horizontalAdvance(plain) * scale;
    if (width > area.width() && width > 0)
        scale *= area.width() / width;
    painter.save();
    painter.setFont(text.Font);
    painter.setPen(ink);
    painter.translate(area.center());
    painter.scale(scale, scale);
    const int flags = Qt::AlignCenter | Qt::TextSingleLine
                      | (text.ShowMnemonic ? Qt::TextShowMnemonic : Qt::TextHideMnemonic);
    const QSizeF size = area.size() / scale;
    painter.drawText(QRectF(QPointF(-size.width() / 2, -size.height() / 2), size), flags, text.Caption);
    painter.restore();
}

void PaintDigit(QPainter &painter, PhoneKey key, const QRectF &area, qreal unit, const KeyCapState &state,
                const QPalette &palette, const KeyFaceText &text)
{
    const QString &digit = text.Caption;
    const QStringView letters = DigitLetters.at(static_cast<std::size_t>(key - PhoneKeys::Digit1));
    const bool voicemail = key == PhoneKeys::Digit1;

    const QFontMetricsF metrics(text.Font);
    qreal bigScale = TextScale(text, 8.2 * unit);
    const qreal smallScale = TextScale(text, 4.5 * unit);
    // The ink's own extent, so that "*" and "#" sit in the middle like the digits.
    const QRectF ink = metrics.tightBoundingRect(digit);
    const qreal gap = 1.4 * unit;
    qreal extraWidth = 0;
    if (!letters.isEmpty())
        extraWidth = gap + metrics.horizontalAdvance(letters.toString()) * smallScale;
    else if (voicemail)
        extraWidth = gap + VoicemailWidth * unit;
    const qreal available = area.width() - 2 * unit;
    if (ink.width() * bigScale + extraWidth > available && ink.width() > 0) {
        // Text from outside that is wider than a digit.
        bigScale *= std::max(0.3, (available - extraWidth) / (ink.width() * bigScale));
    }
    const QRectF digitBox(ink.topLeft() * bigScale, ink.size() * bigScale);
    const qreal total = digitBox.width() + extraWidth;
    const qreal left = area.center().x() - total / 2;
    const qreal baseline = area.center().y() - digitBox.center().y();

    const KeyCapStyle style = KeyCapStyle::Digit;
    painter.setFont(text.Font);
    painter.setPen(KeyCapInk(style, state, palette));
    DrawScaledText(painter, QPointF(left - digitBox.left(), baseline), bigScale, digit);

    const QColor secondary = KeyCapInk(style, state, palette, true);
    const qreal extraLeft = left + digitBox.width() + gap;
    const qreal digitBottom = baseline + digitBox.bottom();
    if (!letters.isEmpty()) {
        painter.setPen(secondary);
        DrawScaledText(painter, QPointF(extraLeft, digitBottom), smallScale, letters.toString());
    } else if (voicemail) {
        PaintVoicemailMark(painter, QRectF(extraLeft, digitBottom - 2.6 * unit, VoicemailWidth * unit, 2.6 * unit),
                           secondary);
    }
}

} // namespace

void PaintKeyFace(QPainter &painter, PhoneKey key, const QRectF &content, qreal unit, const KeyCapState &state,
                  const QPalette &palette, const KeyFaceText &text)
{
    const KeyCapStyle style = KeyCapStyleOf(key);
    // A pressed key's face sinks a little with it.
    const QRectF area = content.translated(0, state.Down ? 0.25 * unit : 0);
    const KeySymbol symbol = SymbolOf(key);
    if (symbol != KeySymbol::None)
        PaintKeySymbol(painter, area, symbol, KeyCapInk(style, state, palette));
    else if (style == KeyCapStyle::Digit)
        PaintDigit(painter, key, area, unit, state, palette, text);
    else
        PaintCaption(painter, area, unit, KeyCapInk(style, state, palette), text);
}
