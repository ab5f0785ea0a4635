// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/phonekeybutton.h"

#include "editor/deviceplacement.h"
#include "keymap/keymap.h"

#include <QFocusEvent>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>

#include <algorithm>
#include <array>

namespace {

const qreal VoicemailWidth = 5.4;

// The usual letters of the digit keys 1..9, *, 0, #.
const std::array<QStringView, 12> DigitLetters = {
    u"", u"abc", u"def", u"ghi", u"jkl", u"mno", u"pqrs", u"tuv", u"wxyz", u"", u"+", u"",
};

KeySymbol SymbolOf(int index)
{
    switch (index) {
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

// The keys' texts are drawn in the button's own font, scaled by the painter to
// the size wanted. Every size then shares the font the window already uses:
// each other size or weight would load a font of its own, and those loads were
// the larger part of the phone's first paint.
qreal TextScale(const QWidget &widget, qreal pixels)
{
    const QFont &font = widget.font();
    // The font's exact size: a 10 point font is 13 1/3 pixels at 96 dpi.
    const qreal fontPixels = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * widget.logicalDpiY() / 72.0;
    return fontPixels > 0 ? pixels / fontPixels : 1;
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

} // namespace

PhoneKeyButton::PhoneKeyButton(int index, KeyCapStyle style, QWidget *parent)
    : QAbstractButton(parent), m_index(index), m_style(style)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
}

void PhoneKeyButton::SetActive(bool active)
{
    if (m_active == active)
        return;
    m_active = active;
    update();
}

void PhoneKeyButton::SetFace(const QPainterPath &face, const QRectF &content, qreal unit)
{
    m_face = face;
    m_content = content;
    m_unit = unit;
    update();
}

void PhoneKeyButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    KeyCapState state;
    state.Hovered = underMouse();
    state.Down = IsDrawnDown();
    state.Focused = hasFocus();
    state.Enabled = isEnabled();
    PaintCap(painter, state);

    const KeySymbol symbol = SymbolOf(m_index);
    if (symbol != KeySymbol::None) {
        // A pressed key's symbol sinks a little with it.
        const QRectF content = m_content.translated(0, state.Down ? 0.25 * m_unit : 0);
        PaintKeySymbol(painter, content, symbol, KeyCapInk(m_style, state, palette()));
    } else if (m_style == KeyCapStyle::Digit) {
        PaintDigit(painter, state);
    } else {
        PaintCaption(painter, state);
    }
}

QString PhoneKeyButton::CapKey(const KeyCapState &state, qreal ratio, QPointF fraction) const
{
    // The digit keys share one outline, so they share their caps too.
    const int owner = m_style == KeyCapStyle::Digit ? -1 : m_index;
    const QRectF bounds = m_face.boundingRect();
    return QString::asprintf("PhoneKeyCap %d %d %d%d%d %08x %g %g,%g %g %dx%d %g %g", owner, static_cast<int>(m_style),
                             state.Down, state.Hovered && state.Enabled, state.Focused, KeyAccent(palette()).rgba(),
                             ratio, fraction.x(), fraction.y(), m_unit, width(), height(), bounds.left(),
                             bounds.top());
}

void PhoneKeyButton::PaintCap(QPainter &painter, const KeyCapState &state)
{
    // A joystick direction at rest shows nothing of its own.
    if (m_style == KeyCapStyle::JoystickDirection && !state.Down && !state.Focused
        && !(state.Hovered && state.Enabled))
        return;
    // Each look of a cap is drawn once into a pixmap and reused, by the twelve
    // digit keys alike and by a key that is hovered or pressed again. The keypad
    // draws the caps at rest ahead of time, together with the body.
    const DevicePlacement at = PlacementOf(painter);
    const QString key = CapKey(state, at.Ratio, at.Fraction);
    QPixmap cap;
    if (!QPixmapCache::find(key, &cap)) {
        cap = QPixmap::fromImage(RenderPlaced(size(), at, [&](QPainter &capPainter) {
            PaintKeyCap(capPainter, m_face, m_style, state, palette(), m_unit);
        }));
        QPixmapCache::insert(key, cap);
    }
    painter.drawPixmap(PlacedOrigin(at), cap);
}

void PhoneKeyButton::PaintCaption(QPainter &painter, const KeyCapState &state)
{
    const QString caption = text();
    if (caption.isEmpty())
        return;
    const QRectF area =
        m_content.adjusted(1.2 * m_unit, 0, -1.2 * m_unit, 0).translated(0, state.Down ? 0.25 * m_unit : 0);
    qreal scale = TextScale(*this, 5.4 * m_unit);
    // Long captions of other languages shrink to fit.
    QString plain = caption;
    plain.remove(u'&');
    const qreal width = QFontMetricsF(font()).horizontalAdvance(plain) * scale;
    if (width > area.width() && width > 0)
        scale *= area.width() / width;
    painter.save();
    painter.setFont(font());
    painter.setPen(KeyCapInk(m_style, state, palette()));
    painter.translate(area.center());
    painter.scale(scale, scale);
    int flags = Qt::AlignCenter | Qt::TextSingleLine;
    flags |= style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this) ? Qt::TextShowMnemonic
                                                                             : Qt::TextHideMnemonic;
    const QSizeF size = area.size() / scale;
    painter.drawText(QRectF(QPointF(-size.width() / 2, -size.height() / 2), size), flags, caption);
    painter.restore();
}

void PhoneKeyButton::PaintDigit(QPainter &painter, const KeyCapState &state)
{
    const QString digit = text();
    const QStringView letters = DigitLetters.at(static_cast<std::size_t>(m_index - PhoneKeys::Digit1));
    const bool voicemail = m_index == PhoneKeys::Digit1;
    const QRectF area = m_content.translated(0, state.Down ? 0.25 * m_unit : 0);

    const QFontMetricsF metrics(font());
    qreal bigScale = TextScale(*this, 8.2 * m_unit);
    const qreal smallScale = TextScale(*this, 4.5 * m_unit);
    // The ink's own extent, so that "*" and "#" sit in the middle like the digits.
    const QRectF ink = metrics.tightBoundingRect(digit);
    const qreal gap = 1.4 * m_unit;
    qreal extraWidth = 0;
    if (!letters.isEmpty())
        extraWidth = gap + metrics.horizontalAdvance(letters.toString()) * smallScale;
    else if (voicemail)
        extraWidth = gap + VoicemailWidth * m_unit;
    const qreal available = area.width() - 2 * m_unit;
    if (ink.width() * bigScale + extraWidth > available && ink.width() > 0) {
        // Text from outside that is wider than a digit.
        bigScale *= std::max(0.3, (available - extraWidth) / (ink.width() * bigScale));
    }
    const QRectF digitBox(ink.topLeft() * bigScale, ink.size() * bigScale);
    const qreal total = digitBox.width() + extraWidth;
    const qreal left = area.center().x() - total / 2;
    const qreal baseline = area.center().y() - digitBox.center().y();

    painter.setFont(font());
    painter.setPen(KeyCapInk(m_style, state, palette()));
    DrawScaledText(painter, QPointF(left - digitBox.left(), baseline), bigScale, digit);

    const QColor secondary = KeyCapInk(m_style, state, palette(), true);
    const qreal extraLeft = left + digitBox.width() + gap;
    const qreal digitBottom = baseline + digitBox.bottom();
    if (!letters.isEmpty()) {
        painter.setPen(secondary);
        DrawScaledText(painter, QPointF(extraLeft, digitBottom), smallScale, letters.toString());
    } else if (voicemail) {
        PaintVoicemailMark(painter,
                           QRectF(extraLeft, digitBottom - 2.6 * m_unit, VoicemailWidth * m_unit, 2.6 * m_unit),
                           secondary);
    }
}

bool PhoneKeyButton::hitButton(const QPoint &pos) const
{
    // A joystick direction takes its whole arm, more than the segment it lights.
    if (m_face.isEmpty() || m_style == KeyCapStyle::JoystickDirection)
        return QAbstractButton::hitButton(pos);
    return m_face.contains(QPointF(pos) + QPointF(0.5, 0.5));
}

bool PhoneKeyButton::event(QEvent *event)
{
    // The access key of a caption ("&Left") selects the key as a click does:
    // the focus moves to it, then it is pressed.
    if (event->type() == QEvent::Shortcut && isEnabled())
        setFocus(Qt::ShortcutFocusReason);
    return QAbstractButton::event(event);
}

void PhoneKeyButton::focusInEvent(QFocusEvent *event)
{
    QAbstractButton::focusInEvent(event);
    emit Focused(m_index);
}

void PhoneKeyButton::focusOutEvent(QFocusEvent *event)
{
    QAbstractButton::focusOutEvent(event);
    // Only focus that moves within the window counts: switching to another window,
    // opening a menu or closing the window keeps the key focused as far as the
    // editor is concerned (and a window being destroyed must not be called back).
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        emit FocusLost(m_index);
}

void PhoneKeyButton::mouseReleaseEvent(QMouseEvent *event)
{
    QAbstractButton::mouseReleaseEvent(event);
    if (rect().contains(event->position().toPoint()))
        emit Released(m_index);
}
