// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QStringList>
#include <QWidget>

// The focusable controls below widget that a screen reader could only call
// by their kind: class and object name of each.
inline QStringList UnnamedFocusable(QWidget *widget)
{
    QStringList found;
    const auto walk = [&found](const auto &self, QAccessibleInterface *node) -> void {
        if (node->state().focusable && node->text(QAccessible::Name).trimmed().isEmpty())
            found << QString::fromLatin1(node->object()->metaObject()->className()) + u' '
                         + node->object()->objectName();
        for (int i = 0; i < node->childCount(); ++i)
            self(self, node->child(i));
    };
    walk(walk, QAccessible::queryAccessibleInterface(widget));
    return found;
}
