// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keymap.h"
#include "phoneart/phoneart.h"

#include <QFont>
#include <QString>

class QPainter;
class QPalette;

// The words on a key cap and the font they are written in.
struct KeyFaceText
{
    QString Caption; // "&" marks the access key
    QFont Font;
    qreal FontPixels = 0; // the font's size in pixels where it is drawn
    bool ShowMnemonic = false; // underline the access key
};

// Draws what a key shows on its cap, over the cap: the symbol of a key that has
// one, a digit with its letters, or the caption shrunk to fit. content is the
// part of the cap that holds it, unit the length of a design unit. Texts are
// drawn in the font given, scaled by the painter, so a printer keeps them as
// text.
void PaintKeyFace(QPainter &painter, PhoneKey key, const QRectF &content, qreal unit, const KeyCapState &state,
                  const QPalette &palette, const KeyFaceText &text);
