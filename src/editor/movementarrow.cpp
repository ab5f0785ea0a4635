// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/movementarrow.h"

#include "keymap/keymap.h"
#include "phoneart/artshapes.h"

#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

namespace {

class MovementArrowEngine : public QIconEngine
{
public:
    MovementArrowEngine(int mouseAction, const QPalette &palette)
        : m_action(mouseAction), m_normal(palette.color(QPalette::Active, QPalette::WindowText)),
          m_disabled(palette.color(QPalette::Disabled, QPalette::WindowText)),
          m_selected(palette.color(QPalette::Active, QPalette::HighlightedText))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QColor colour = mode == QIcon::Disabled ? m_disabled : mode == QIcon::Selected ? m_selected : m_normal;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        PaintMovementArrow(*painter, rect, m_action, colour);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new MovementArrowEngine(*this); }

private:
    int m_action;
    QColor m_normal;
    QColor m_disabled;
    QColor m_selected;
};

} // namespace

void PaintMovementArrow(QPainter &painter, const QRectF &rect, int mouseAction, const QColor &colour)
{
    if (mouseAction < MouseActions::MoveLeft || mouseAction > MouseActions::MoveDownLeft)
        return;
    const qreal s = Square(rect).width();
    // Movements run clockwise from left in steps of 45 degrees.
    const qreal degrees = 180.0 + 45.0 * (mouseAction - MouseActions::MoveLeft);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center());
    painter.rotate(degrees);
    // Pointing right, within a circle of radius 0.45 s so that diagonals fit too.
    const qreal shaft = 0.075 * s;
    QPainterPath arrow;
    arrow.addRect(QRectF(-0.4 * s, -shaft, 0.46 * s, 2 * shaft));
    arrow = arrow.united(Triangle(QPointF(0.42 * s, 0), QPointF(0.0, -0.27 * s), QPointF(0.0, 0.27 * s)));
    FillSmooth(painter, arrow, colour, 0.04 * s);
    painter.restore();
}

QIcon MovementArrowIcon(int mouseAction, const QPalette &palette)
{
    return QIcon(new MovementArrowEngine(mouseAction, palette));
}
