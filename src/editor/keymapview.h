// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class Document;
class QPlainTextEdit;

// The keymap as the phone gets it, in a read-only monospace text that follows
// every edit while the window is open.
class KeymapView : public QWidget
{
    Q_OBJECT

public:
    explicit KeymapView(const Document &document, QWidget *parent = nullptr);

    QString Text() const;
    void Refresh();

private:
    const Document &m_document;
    QPlainTextEdit *m_text = nullptr;
};
