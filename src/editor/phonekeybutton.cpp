// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/phonekeybutton.h"

#include "editor/deviceplacement.h"
#include "keymap/keymap.h"
#include "phoneart/keyface.h"

#include <QFocusEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>

namespace {

// The font's exact size in pixels: a 10 point font is 13 1/3 pixels at 96 dpi.
qreal FontPixels(const QWidget &widget)
{
    const QFont &font = widget.font();
    return font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * widget.logicalDpiY() / 72.0;
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

    KeyFaceText face{text(), font(), FontPixels(*this),
                     style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this) != 0};
    PaintKeyFace(painter, m_index, m_content, m_unit, state, palette(), face);
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
