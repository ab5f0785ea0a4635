// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymapview.h"

#include "editortexts.h"
#include "keymap/keymapwriter.h"
#include "profile/document.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

KeymapView::KeymapView(const Document &document, QWidget *parent) : QWidget(parent, Qt::Window), m_document(document)
{
    setWindowTitle(WithoutAccessKey(LanguageText(EditorText::MenuViewKeymap)));
    m_text = new QPlainTextEdit(this);
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_text);
    const QFontMetrics metrics(m_text->font());
    resize(metrics.horizontalAdvance(QString(72, u'x')), metrics.lineSpacing() * 30);

    connect(&document, &Document::KeyActionChanged, this, &KeymapView::Refresh);
    connect(&document, &Document::KeymapReplaced, this, &KeymapView::Refresh);
    Refresh();
}

QString KeymapView::Text() const
{
    return m_text->toPlainText();
}

void KeymapView::Refresh()
{
    // Keep the reader's place while the text follows the edits.
    const int scroll = m_text->verticalScrollBar()->value();
    QString text = WriteKeymapText(m_document.CurrentKeymap());
    m_text->setPlainText(text.replace("\r\n"_L1, "\n"_L1));
    m_text->verticalScrollBar()->setValue(scroll);
}
