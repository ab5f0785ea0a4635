// SPDX-License-Identifier: GPL-3.0-or-later
// The document's history: each step keeps the document's content before and
// after it, which costs little (the keymap is 22 short records, the picture an
// implicitly shared image and the name of its temporary copy, which stays on
// disk until the program ends).
#include "document.h"

#include <QUndoCommand>

#include <utility>

namespace {

// Comment edits of one key share this id, so that the letters typed one after
// another make one step.
constexpr int CommentEditId = 1;

} // namespace

class DocumentStep : public QUndoCommand
{
public:
    DocumentStep(Document &document, Document::Content before, Document::Content after, bool clearsSaved,
                 PhoneKey commentKey)
        : m_document(document), m_before(std::move(before)), m_after(std::move(after)), m_clearsSaved(clearsSaved),
          m_commentKey(commentKey)
    {
    }

    int id() const override { return m_commentKey < 0 ? -1 : CommentEditId; }

    bool mergeWith(const QUndoCommand *other) override
    {
        const auto *next = static_cast<const DocumentStep *>(other);
        if (next->m_commentKey != m_commentKey)
            return false;
        m_after = next->m_after;
        return true;
    }

    void undo() override { m_document.Restore(m_before, m_clearsSaved); }

    void Rename(const QString &file)
    {
        m_before.File = file;
        m_after.File = file;
    }

    void redo() override
    {
        // The command itself made the change before it was recorded.
        if (std::exchange(m_pending, false))
            return;
        m_document.Restore(m_after, m_clearsSaved);
    }

private:
    Document &m_document;
    Document::Content m_before;
    Document::Content m_after;
    bool m_clearsSaved;
    PhoneKey m_commentKey;
    bool m_pending = true;
};

bool Document::Content::operator==(const Content &other) const
{
    return Keys == other.Keys && File == other.File && Picture.PictureTempPath == other.Picture.PictureTempPath
           && Picture.PictureName == other.Picture.PictureName
           && Picture.Image.cacheKey() == other.Picture.Image.cacheKey();
}

Document::Content Document::CurrentContent() const
{
    return Content{m_keymap, m_picture, m_currentFile};
}

void Document::Restore(const Content &content, bool clearsSaved)
{
    const bool newPicture = content.Picture.PictureTempPath != m_picture.PictureTempPath
                            || content.Picture.Image.cacheKey() != m_picture.Image.cacheKey();
    m_keymap = content.Keys;
    m_picture = content.Picture;
    if (clearsSaved)
        m_isSaved = false;
    SetCurrentFile(content.File);
    if (newPicture)
        emit PictureChanged();
    emit KeymapReplaced();
}

void Document::Record(const Content &before, bool clearsSaved, PhoneKey commentKey)
{
    Content after = CurrentContent();
    if (after == before)
        return;
    m_history.push(new DocumentStep(*this, before, std::move(after), clearsSaved, commentKey));
}

void Document::StartHistory()
{
    m_history.clear();
    // A document opened with changes kept (a bare keymap opened after the
    // save question was answered No) has no state that matches a file.
    if (!m_isSaved)
        m_history.resetClean();
}

void Document::NameHistory(const QString &file)
{
    // Every state in the history now belongs to the file it was saved to: an
    // undo after Save As must not send the next Save back to the old file.
    for (int i = 0; i < m_history.count(); ++i)
        const_cast<DocumentStep *>(static_cast<const DocumentStep *>(m_history.command(i)))->Rename(file);
}

void Document::Undo()
{
    if (!m_history.canUndo())
        return;
    m_history.undo();
    if (m_history.isClean())
        m_isSaved = true;
}

void Document::Redo()
{
    if (!m_history.canRedo())
        return;
    m_history.redo();
    if (m_history.isClean())
        m_isSaved = true;
}
