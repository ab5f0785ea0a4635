// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keymap.h"
#include "phoneart/phoneart.h"

#include <QPainterPath>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QSizeF>

#include <array>

// The shape of the phone and where its parts go in a widget. The phone is laid
// out in design units: the body is 100 units wide.

// How a key's cap is drawn, by where the key sits on the phone.
KeyCapStyle KeyCapStyleOf(PhoneKey key);

// The room the phone takes in design units: the body, the side keys standing
// out on the right (and as much room on the left, so that the body stays
// centred) and the shadow below.
QSizeF PhoneDesignSize();

// The phone in a widget of some size: it keeps its proportions and sits in the
// middle. All in the widget's coordinates unless said otherwise.
struct PhoneLayout
{
    struct Key
    {
        QRect Geometry; // the key button, in whole pixels
        // In the button's own coordinates: the outline of its cap, and the part
        // of it that holds the caption or symbol.
        QPainterPath Face;
        QRectF Content;
    };
    std::array<Key, PhoneKeys::Count> Keys;
    QRect Display; // where the picture is shown, in whole pixels
    PhoneBodyArt Art; // Art.Unit is the length of a design unit in pixels
};
PhoneLayout LayOutPhone(QSize size);
