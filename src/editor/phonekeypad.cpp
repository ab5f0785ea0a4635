// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/phonekeypad.h"

#include "editor/phonekeybutton.h"
#include "phoneart/phonegeometry.h"
#include "profile/picture.h"

#include <QEvent>
#include <QPainter>
#include <QPixmapCache>
#include <QSet>
#include <QThreadPool>

#include <memory>

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
        m_scaled = QPixmap::fromImage(m_picture.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
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
        auto *button = new PhoneKeyButton(index, KeyCapStyleOf(index), this);
        // In English until the window puts in the captions of its language.
        const PhoneKeyName &name = PhoneKeyNames.at(static_cast<std::size_t>(index));
        if (name.ShowsSymbol)
            button->setAccessibleName(name.Name.English.toString());
        else
            button->setText(name.Name.English.toString());
        connect(button, &PhoneKeyButton::Focused, this, &PhoneKeypad::KeyButtonFocused);
        connect(button, &PhoneKeyButton::Released, this, &PhoneKeypad::KeyButtonReleased);
        connect(button, &PhoneKeyButton::FocusLost, this, &PhoneKeypad::KeyButtonFocusLost);
        m_buttons.at(static_cast<std::size_t>(index)) = button;
    }
    // Tab runs as the eye reads: soft keys and joystick, the digits, then the side keys.
    const std::array<int, PhoneKeys::Count> tabOrder = {
        PhoneKeys::Lsk,      PhoneKeys::Up,       PhoneKeys::Left,     PhoneKeys::Joy,      PhoneKeys::Right,
        PhoneKeys::Down,     PhoneKeys::Rsk,      PhoneKeys::Digit(1), PhoneKeys::Digit(2), PhoneKeys::Digit(3),
        PhoneKeys::Digit(4), PhoneKeys::Digit(5), PhoneKeys::Digit(6), PhoneKeys::Digit(7), PhoneKeys::Digit(8),
        PhoneKeys::Digit(9), PhoneKeys::Star,     PhoneKeys::Digit(0), PhoneKeys::Hash,     PhoneKeys::VolUp,
        PhoneKeys::VolDown,  PhoneKeys::Cam,
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
    return (PhoneDesignSize() * 2.2).toSize();
}

QSize PhoneKeypad::minimumSizeHint() const
{
    return (PhoneDesignSize() * 1.2).toSize();
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
    struct CapJob
    {
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
    QThreadPool::globalInstance()->start([promise, caps, art = m_art, palette = palette(), size = size(), at] {
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
    const PhoneLayout layout = LayOutPhone(size());
    m_screen->setGeometry(layout.Display);
    m_screen->SetGlass(layout.Art.Glass.translated(-layout.Display.topLeft()));
    for (PhoneKeyButton *button : m_buttons) {
        const PhoneLayout::Key &key = layout.Keys.at(static_cast<std::size_t>(button->Index()));
        button->setGeometry(key.Geometry);
        button->SetFace(key.Face, key.Content, layout.Art.Unit);
    }
    m_art = layout.Art;
    update();
}
