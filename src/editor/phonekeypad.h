// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/deviceplacement.h"
#include "keymap/keymap.h"
#include "phoneart/phoneart.h"

#include <QAbstractButton>
#include <QImage>
#include <QPixmap>
#include <QWidget>

#include <array>
#include <future>

class PhoneKeyButton;

// The display of the phone: shows the profile's picture shrunk to fit (never
// enlarged) and centred; the dark glass around it belongs to the body.
class PhoneScreen : public QWidget
{
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
class PhoneKeypad : public QWidget
{
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

    std::array<PhoneKeyButton *, PhoneKeys::Count> m_buttons{};
    PhoneScreen *m_screen = nullptr;
    PhoneBodyArt m_art;
    int m_activeButton = -1;
    // The body as drawn last, and what it was drawn for; the drawing under way
    // also brings the caps at rest, named by CapKey, for the pixmap cache.
    struct BodyArt
    {
        QImage Body;
        QList<std::pair<QString, QImage>> Caps;
    };
    std::future<BodyArt> m_pendingBody;
    QImage m_body;
    bool m_bodyDrawn = false;
    QSize m_bodySize;
    DevicePlacement m_bodyPlacement;
};
