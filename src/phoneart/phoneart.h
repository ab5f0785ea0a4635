// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QLinearGradient>
#include <QList>
#include <QPainterPath>
#include <QRectF>

class QPainter;
class QPalette;

// The vector art of the phone picture: key symbols, the phone body and its key
// caps. Everything is drawn with QPainter in floating point, so it is sharp at
// any size and device pixel ratio.

// The symbols of the keys that show no words.
enum class KeySymbol { None, JoystickPress, ArrowLeft, ArrowUp, ArrowRight, ArrowDown, Plus, Minus, Camera };

// Draws the symbol centred in rect, as large as the rect's shorter side allows.
void PaintKeySymbol(QPainter &painter, const QRectF &rect, KeySymbol symbol, const QColor &colour);

// The parts of the phone, all in widget coordinates; unit is the length of one
// design unit (the body is 100 units wide), used for line widths and radii.
struct PhoneBodyArt
{
    QRectF Body;
    QRectF Glass; // the black glass around the display
    QRectF Display; // where the picture is shown
    QPointF JoystickCentre;
    qreal JoystickRadius = 0;
    QList<QRectF> SideKeys; // the slots in the body's edge from which side keys stick out
    qreal Unit = 1;
};
// The body with its rim, shading, earpiece, glass and the joystick's ring; the
// keys are drawn over it by the buttons themselves.
void PaintPhoneBody(QPainter &painter, const PhoneBodyArt &art, const QPalette &palette);
// The reflection on the glass. The display paints it over the picture with the
// same gradient, so it runs on without a seam.
QLinearGradient GlassGloss(const QRectF &glass);

// How a key cap is drawn.
enum class KeyCapStyle { Digit, SoftKey, JoystickDirection, JoystickPress, SideKey };
struct KeyCapState
{
    bool Hovered = false;
    bool Down = false; // pressed by the mouse or the space bar, or the selected key
    bool Focused = false;
    bool Enabled = true;
};
// The cap itself, face being its outline. A joystick direction is part of the
// ring that the body carries: face is the segment of the ring that lights up on
// hover and press, and nothing else is drawn for it but the focus mark.
void PaintKeyCap(QPainter &painter, const QPainterPath &face, KeyCapStyle style, const KeyCapState &state,
                 const QPalette &palette, qreal unit);
// The colour of words and symbols on a cap of that style.
QColor KeyCapInk(KeyCapStyle style, const KeyCapState &state, const QPalette &palette, bool secondary = false);
// The colour that marks the selected and the focused key, from the palette's highlight,
// made light enough to stand out on the dark phone.
QColor KeyAccent(const QPalette &palette);
