// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "phoneart/phoneart.h"

#include <QAbstractButton>
#include <QPainterPath>
#include <QRectF>

// One key of the phone picture: a real button (focusable, Space presses it) that
// paints itself as a key cap. The keypad gives it its outline.
class PhoneKeyButton : public QAbstractButton
{
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

    int m_index;
    KeyCapStyle m_style;
    bool m_active = false;
    QPainterPath m_face;
    QRectF m_content;
    qreal m_unit = 1;
};
