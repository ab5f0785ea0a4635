// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/phonekeypad.h"

#include "profile/picture.h"

#include <QFocusEvent>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPixmapCache>
#include <QSet>
#include <QStyle>
#include <QThreadPool>
#include <QTransform>
#include <QtMath>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// The phone is laid out in design units: the body is 100 units wide and 230 high,
// its top left corner at the origin. The drawing area adds room for the side keys
// on the right (and as much on the left, so that the body stays centred) and for
// the shadow below.
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

const qreal VoicemailWidth = 5.4;

// Room around a cap for its shadow and the focus ring.
const qreal CapMargin = 1.2;

// The usual letters of the digit keys 1..9, *, 0, #.
const std::array<QStringView, 12> DigitLetters = {
    u"",
    u"abc",
    u"def",
    u"ghi",
    u"jkl",
    u"mno",
    u"pqrs",
    u"tuv",
    u"wxyz",
    u"",
    u"+",
    u"",
};

KeyCapStyle StyleOf(int index)
{
    switch (index) {
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

QString DefaultCaption(int index)
{
    static const std::array<QStringView, 12> digits
        = { u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"*", u"0", u"#" };
    if (index == PhoneKeys::Lsk)
        return u"&Left"_s;
    if (index == PhoneKeys::Rsk)
        return u"&Right"_s;
    if (index >= PhoneKeys::Digit1 && index <= PhoneKeys::Hash)
        return digits.at(static_cast<std::size_t>(index - PhoneKeys::Digit1)).toString();
    return {};
}

// For screen readers; the keys 2..9 show no words.
QString DefaultAccessibleName(int index)
{
    switch (index) {
    case PhoneKeys::Joy:
        return u"Joystick press"_s;
    case PhoneKeys::Left:
        return u"Joystick left"_s;
    case PhoneKeys::Up:
        return u"Joystick up"_s;
    case PhoneKeys::Right:
        return u"Joystick right"_s;
    case PhoneKeys::Down:
        return u"Joystick down"_s;
    case PhoneKeys::VolUp:
        return u"Plus"_s;
    case PhoneKeys::VolDown:
        return u"Minus"_s;
    case PhoneKeys::Cam:
        return u"Camera"_s;
    default:
        return {};
    }
}

struct KeyShape {
    QRectF Cap; // in design units
    QPainterPath Face; // in design units
    QRectF Content; // in design units
};

QRectF CentredSquare(QPointF centre, qreal side)
{
    return QRectF(centre.x() - side / 2, centre.y() - side / 2, side, side);
}

KeyShape ShapeOf(int index)
{
    KeyShape shape;
    switch (StyleOf(index)) {
    case KeyCapStyle::SoftKey: {
        const bool left = index == PhoneKeys::Lsk;
        shape.Cap = left ? LeftSoftKey
                         : QRectF(BodyRect.width() - LeftSoftKey.right(), LeftSoftKey.top(),
                             LeftSoftKey.width(), LeftSoftKey.height());
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
        const qreal degrees = index == PhoneKeys::Left ? 180
            : index == PhoneKeys::Up                   ? 270
            : index == PhoneKeys::Right                ? 0
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
        const QRectF slot = index == PhoneKeys::VolUp ? VolumeUpSlot
            : index == PhoneKeys::VolDown             ? VolumeDownSlot
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
        const QRectF cap(DigitLeft + (position % 3) * DigitColumnPitch,
            DigitTop + (position / 3) * DigitRowPitch, DigitWidth, DigitHeight);
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

// The keys' texts are drawn in the button's own font, scaled by the painter to
// the size wanted. Every size then shares the font the window already uses:
// each other size or weight would load a font of its own, and those loads were
// the larger part of the phone's first paint.
qreal TextScale(const QWidget &widget, qreal pixels)
{
    const QFont &font = widget.font();
    // The font's exact size: a 10 point font is 13 1/3 pixels at 96 dpi.
    const qreal fontPixels
        = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * widget.logicalDpiY() / 72.0;
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

DevicePlacement Placement(qreal ratio, QPointF origin)
{
    const auto fraction = [](qreal at) {
        // In steps of 1/64, so that the same place always gives the same value.
        const qreal step = std::round((at - std::floor(at)) * 64) / 64;
        return step >= 1 ? 0.0 : step;
    };
    return {ratio > 0 ? ratio : 1, QPointF(fraction(origin.x()), fraction(origin.y()))};
}

DevicePlacement PlacementOf(const QPainter &painter)
{
    const QTransform &transform = painter.deviceTransform();
    return Placement(std::sqrt(std::abs(transform.determinant())), transform.map(QPointF(0, 0)));
}

// Where the widget lands when its window is painted at that ratio.
DevicePlacement PlacementOf(const QWidget &widget, qreal ratio)
{
    return Placement(ratio, QPointF(widget.mapTo(widget.window(), QPoint(0, 0))) * ratio);
}

// A drawing of a widget's size kept as an image, and how it is put down.
template <typename Paint>
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

QPointF PlacedOrigin(const DevicePlacement &at)
{
    return -at.Fraction / at.Ratio;
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
    return QString::asprintf("PhoneKeyCap %d %d %d%d%d %08x %g %g,%g %g %dx%d %g %g", owner,
        static_cast<int>(m_style), state.Down, state.Hovered && state.Enabled, state.Focused,
        KeyAccent(palette()).rgba(), ratio, fraction.x(), fraction.y(), m_unit, width(), height(), bounds.left(),
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
    const QRectF area
        = m_content.adjusted(1.2 * m_unit, 0, -1.2 * m_unit, 0).translated(0, state.Down ? 0.25 * m_unit : 0);
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
            QRectF(extraLeft, digitBottom - 2.6 * m_unit, VoicemailWidth * m_unit, 2.6 * m_unit), secondary);
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

PhoneScreen::PhoneScreen(QWidget *parent) : QWidget(parent)
{
}

void PhoneScreen::SetPicture(const QImage &picture)
{
    m_picture = picture;
    m_scaled = QPixmap();
    update();
}

QRect PhoneScreen::PictureRect() const
{
    if (m_picture.isNull())
        return {};
    int width = m_picture.width();
    int height = m_picture.height();
    return FitRect(this->width(), this->height(), width, height, true);
}

void PhoneScreen::SetGlass(const QRectF &glass)
{
    m_glass = glass;
    update();
}

void PhoneScreen::paintEvent(QPaintEvent *)
{
    // Without a picture the body's glass shows through.
    const QRect shown = PictureRect();
    if (shown.isEmpty())
        return;
    QPainter painter(this);
    const qreal ratio = PlacementOf(painter).Ratio;
    const QSize pixels(qRound(shown.width() * ratio), qRound(shown.height() * ratio));
    // Scaled once per size, not on every paint.
    if (m_scaled.size() != pixels) {
        m_scaled
            = QPixmap::fromImage(m_picture.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        m_scaled.setDevicePixelRatio(ratio);
    }
    painter.drawPixmap(shown.topLeft(), m_scaled);
    painter.fillRect(shown, GlassGloss(m_glass));
}

PhoneKeypad::PhoneKeypad(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    m_screen = new PhoneScreen(this);
    for (int index = 0; index < PhoneKeys::Count; ++index) {
        auto *button = new PhoneKeyButton(index, StyleOf(index), this);
        button->setText(DefaultCaption(index));
        button->setAccessibleName(DefaultAccessibleName(index));
        connect(button, &PhoneKeyButton::Focused, this, &PhoneKeypad::KeyButtonFocused);
        connect(button, &PhoneKeyButton::Released, this, &PhoneKeypad::KeyButtonReleased);
        connect(button, &PhoneKeyButton::FocusLost, this, &PhoneKeypad::KeyButtonFocusLost);
        m_buttons.at(static_cast<std::size_t>(index)) = button;
    }
    // Tab runs as the eye reads: soft keys and joystick, the digits, then the side keys.
    const std::array<int, PhoneKeys::Count> tabOrder = {
        PhoneKeys::Lsk,
        PhoneKeys::Up,
        PhoneKeys::Left,
        PhoneKeys::Joy,
        PhoneKeys::Right,
        PhoneKeys::Down,
        PhoneKeys::Rsk,
        PhoneKeys::Digit(1),
        PhoneKeys::Digit(2),
        PhoneKeys::Digit(3),
        PhoneKeys::Digit(4),
        PhoneKeys::Digit(5),
        PhoneKeys::Digit(6),
        PhoneKeys::Digit(7),
        PhoneKeys::Digit(8),
        PhoneKeys::Digit(9),
        PhoneKeys::Star,
        PhoneKeys::Digit(0),
        PhoneKeys::Hash,
        PhoneKeys::VolUp,
        PhoneKeys::VolDown,
        PhoneKeys::Cam,
    };
    for (std::size_t i = 1; i < tabOrder.size(); ++i)
        setTabOrder(CMD(tabOrder.at(i - 1)), CMD(tabOrder.at(i)));
    LayOut();
}

QAbstractButton *PhoneKeypad::CMD(int index) const
{
    if (index < 0 || index >= PhoneKeys::Count)
        return nullptr;
    return m_buttons.at(static_cast<std::size_t>(index));
}

void PhoneKeypad::SetActiveButton(int index)
{
    m_activeButton = index >= 0 && index < PhoneKeys::Count ? index : -1;
    for (PhoneKeyButton *button : m_buttons)
        button->SetActive(button->Index() == m_activeButton);
}

void PhoneKeypad::SetKeyButtonsEnabled(bool enabled)
{
    for (PhoneKeyButton *button : m_buttons)
        button->setEnabled(enabled);
}

void PhoneKeypad::SetPicture(const QImage &picture)
{
    m_screen->SetPicture(picture);
}

QWidget *PhoneKeypad::ScreenArea() const
{
    return m_screen;
}

QSize PhoneKeypad::sizeHint() const
{
    return (DesignArea.size() * 2.2).toSize();
}

QSize PhoneKeypad::minimumSizeHint() const
{
    return (DesignArea.size() * 1.2).toSize();
}

PhoneKeypad::~PhoneKeypad()
{
    // The buttons outlive this part of the object while the widget is torn down.
    for (PhoneKeyButton *button : m_buttons)
        disconnect(button, nullptr, this, nullptr);
    // A drawing under way finishes before the program can go.
    if (m_pendingBody.valid())
        m_pendingBody.wait();
}

void PhoneKeypad::RenderBody(const DevicePlacement &at)
{
    if (m_bodyDrawn && m_bodySize == size() && m_bodyPlacement == at)
        return;
    m_bodyDrawn = true;
    m_bodySize = size();
    m_bodyPlacement = at;
    struct CapJob {
        QString Key;
        QPainterPath Face;
        KeyCapStyle Style;
        QSize Size;
        DevicePlacement Placement;
    };
    QList<CapJob> caps;
    QSet<QString> keys;
    for (const PhoneKeyButton *button : m_buttons) {
        if (button->Style() == KeyCapStyle::JoystickDirection)
            continue;
        const DevicePlacement placement = PlacementOf(*button, at.Ratio);
        QString key = button->CapKey(KeyCapState{}, placement.Ratio, placement.Fraction);
        if (!keys.contains(key)) {
            keys.insert(key);
            // A path of its own: a drawn path keeps caches that two threads must
            // not share.
            QPainterPath face;
            face.setFillRule(button->Face().fillRule());
            face.addPath(button->Face());
            caps.append({std::move(key), face, button->Style(), button->size(), placement});
        }
    }
    // Qt's raster engine hands each large fill to the global thread pool in parts
    // and waits for them, unless it already runs on a thread of that pool. The
    // body is a dozen such fills, and on a busy or virtual machine each hand-over
    // costs more than the fill. So the body and the caps at rest are drawn on one
    // thread of the pool; started when the keypad is shown, that drawing overlaps
    // with the rest of the start-up.
    auto promise = std::make_shared<std::promise<BodyArt>>();
    m_pendingBody = promise->get_future();
    QThreadPool::globalInstance()->start(
        [promise, caps, art = m_art, palette = palette(), size = size(), at] {
            BodyArt result;
            result.Body = RenderPlaced(size, at, [&](QPainter &painter) { PaintPhoneBody(painter, art, palette); });
            for (const CapJob &cap : caps)
                result.Caps.append({cap.Key, RenderPlaced(cap.Size, cap.Placement, [&](QPainter &painter) {
                                        PaintKeyCap(painter, cap.Face, cap.Style, KeyCapState{}, palette, art.Unit);
                                    })});
            promise->set_value(std::move(result));
        });
}

void PhoneKeypad::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const DevicePlacement at = PlacementOf(painter);
    RenderBody(at);
    if (m_pendingBody.valid()) {
        BodyArt art = m_pendingBody.get();
        m_body = art.Body;
        // The buttons paint after the keypad and find their caps in the cache.
        for (const auto &[key, cap] : art.Caps)
            QPixmapCache::insert(key, QPixmap::fromImage(cap));
    }
    painter.drawImage(PlacedOrigin(at), m_body);
}

void PhoneKeypad::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    LayOut();
}

void PhoneKeypad::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // The size is known now: the body is drawn while the rest of the window is
    // made ready. Later sizes are drawn when painted.
    RenderBody(PlacementOf(*this, devicePixelRatioF()));
}

void PhoneKeypad::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        m_bodyDrawn = false;
        update();
    }
}

void PhoneKeypad::LayOut()
{
    // The phone keeps its proportions and sits in the middle of the widget.
    const qreal scale = std::min(width() / DesignArea.width(), height() / DesignArea.height());
    const QPointF origin = QRectF(rect()).center() - DesignArea.center() * scale;
    QTransform toWidget;
    toWidget.translate(origin.x(), origin.y());
    toWidget.scale(scale, scale);

    const QRect display = PixelRect(toWidget.mapRect(DisplayRect));
    m_screen->setGeometry(display);
    m_screen->SetGlass(toWidget.mapRect(GlassRect).translated(-display.topLeft()));

    // The digit keys all take the outline of the first, moved by whole pixels: so
    // they look exactly alike, and share one drawing of their cap.
    const KeyShape firstDigit = ShapeOf(PhoneKeys::Digit1);
    const QRect firstDigitGeometry = PixelRect(toWidget.mapRect(firstDigit.Cap));
    const QTransform toFirstDigit
        = toWidget * QTransform::fromTranslate(-firstDigitGeometry.left(), -firstDigitGeometry.top());
    for (PhoneKeyButton *button : m_buttons) {
        if (button->Style() == KeyCapStyle::Digit) {
            const int position = button->Index() - PhoneKeys::Digit1;
            const QPoint offset(qRound((position % 3) * DigitColumnPitch * scale),
                qRound((position / 3) * DigitRowPitch * scale));
            button->setGeometry(firstDigitGeometry.translated(offset));
            button->SetFace(
                toFirstDigit.map(firstDigit.Face), toFirstDigit.mapRect(firstDigit.Content), scale);
            continue;
        }
        const KeyShape shape = ShapeOf(button->Index());
        const QRect geometry = PixelRect(toWidget.mapRect(shape.Cap));
        button->setGeometry(geometry);
        const QTransform toButton = toWidget * QTransform::fromTranslate(-geometry.left(), -geometry.top());
        button->SetFace(toButton.map(shape.Face), toButton.mapRect(shape.Content), scale);
    }

    m_art.Body = toWidget.mapRect(BodyRect);
    m_art.Glass = toWidget.mapRect(GlassRect);
    m_art.Display = display;
    m_art.JoystickCentre = toWidget.map(JoystickCentre);
    m_art.JoystickRadius = JoystickRadius * scale;
    m_art.SideKeys
        = { toWidget.mapRect(VolumeUpSlot), toWidget.mapRect(VolumeDownSlot), toWidget.mapRect(CameraSlot) };
    m_art.Unit = scale;
    update();
}
