// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/phoneart.h"
#include "keymap/keymap.h"

#include <QAbstractButton>
#include <QImage>
#include <QPixmap>
#include <QWidget>

#include <array>
#include <future>

// Where a widget's drawing lands on the device: how many device pixels a pixel
// covers (the screen's ratio, or the scale of a rendering into a larger image)
// and how far the widget's origin lies past a whole device pixel, which is more
// than nothing at fractional ratios. Drawings kept as images are drawn with that
// offset and put down on whole device pixels, so they land exactly where
// painting directly would have put them.
struct DevicePlacement {
    qreal Ratio = 1;
    QPointF Fraction;

    bool operator==(const DevicePlacement &) const = default;
};

// One key of the phone picture: a real button (focusable, Space presses it) that
// paints itself as a key cap. The keypad gives it its outline.
class PhoneKeyButton : public QAbstractButton {
    Q_OBJECT

public:
    PhoneKeyButton(int index, KeyCapStyle style, QWidget *parent = nullptr);

    int Index() const { return m_index; }
    KeyCapStyle Style() const { return m_style; }
    // The selected key stays drawn pressed while the focus is elsewhere.
    void SetActive(bool active);
    bool IsActive() const { return m_active; }
    // Drawn pressed: held down right now, or the selected key.
    bool IsDrawnDown() const { return isDown() || m_active; }
    // The outline in the button's own coordinates, the part of it that holds the
    // caption or symbol, and the length of a design unit in pixels.
    void SetFace(const QPainterPath &face, const QRectF &content, qreal unit);
    QPainterPath Face() const { return m_face; }
    // Names a look of the cap at that device pixel ratio and offset past a whole
    // device pixel; keys that look alike share the name.
    QString CapKey(const KeyCapState &state, qreal ratio, QPointF fraction) const;

signals:
    void Focused(int index);
    void Released(int index);
    void FocusLost(int index);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &pos) const override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void PaintCap(QPainter &painter, const KeyCapState &state);
    void PaintCaption(QPainter &painter, const KeyCapState &state);
    void PaintDigit(QPainter &painter, const KeyCapState &state);

    int m_index;
    KeyCapStyle m_style;
    bool m_active = false;
    QPainterPath m_face;
    QRectF m_content;
    qreal m_unit = 1;
};

// The display of the phone: shows the profile's picture shrunk to fit (never
// enlarged) and centred; the dark glass around it belongs to the body.
class PhoneScreen : public QWidget {
    Q_OBJECT

public:
    explicit PhoneScreen(QWidget *parent = nullptr);

    void SetPicture(const QImage &picture);
    QImage Picture() const { return m_picture; }
    // Where the picture is shown, in the screen's coordinates; empty without one.
    QRect PictureRect() const;
    // The glass around the display in the screen's coordinates, for its reflection.
    void SetGlass(const QRectF &glass);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage m_picture;
    QRectF m_glass;
    QPixmap m_scaled; // the picture at the size shown, in device pixels
};

// The picture of the phone with its 22 key buttons, indexed by PhoneKey.
class PhoneKeypad : public QWidget {
    Q_OBJECT

public:
    explicit PhoneKeypad(QWidget *parent = nullptr);
    ~PhoneKeypad() override;

    QAbstractButton *CMD(int index) const;
    // That button drawn pressed (it stays so while the focus is elsewhere), the others
    // not; -1 for none.
    void SetActiveButton(int index);
    int ActiveButton() const { return m_activeButton; }
    // All 22 at once, e.g. while the keyboard capture counts down.
    void SetKeyButtonsEnabled(bool enabled);
    // Shown on the screen, shrunk to fit and centred; a null image clears it.
    void SetPicture(const QImage &picture);
    QWidget *ScreenArea() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // A key button got the keyboard focus.
    void KeyButtonFocused(int index);
    // The mouse was released on a key button.
    void KeyButtonReleased(int index);
    // A key button lost the focus to another widget of the window (not to another
    // window or a menu).
    void KeyButtonFocusLost(int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void LayOut();
    // Starts drawing the body for the present size and palette, placed so on the
    // device, unless that drawing is under way or done.
    void RenderBody(const DevicePlacement &at);

    std::array<PhoneKeyButton *, PhoneKeys::Count> m_buttons {};
    PhoneScreen *m_screen = nullptr;
    PhoneBodyArt m_art;
    int m_activeButton = -1;
    // The body as drawn last, and what it was drawn for; the drawing under way
    // also brings the caps at rest, named by CapKey, for the pixmap cache.
    struct BodyArt {
        QImage Body;
        QList<std::pair<QString, QImage>> Caps;
    };
    std::future<BodyArt> m_pendingBody;
    QImage m_body;
    bool m_bodyDrawn = false;
    QSize m_bodySize;
    DevicePlacement m_bodyPlacement;
};
