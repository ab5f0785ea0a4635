// SPDX-License-Identifier: GPL-3.0-or-later
#include "document.h"
#include "picture.h"

#include "keymap/keymapreader.h"
#include "profiletexts.h"
#include "settings/commontexts.h"
#include "support/nativefile.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QString UnnamedText()
{
    return LanguageText(CommonText::Unnamed);
}

} // namespace

Document::Document(QObject *parent) : QObject(parent)
{
}

Document::~Document()
{
    DropReadAhead();
}

bool Document::IsKeymapDocument() const
{
    return FileKindOf(m_currentFile) == FileKind::Keymap;
}

QString Document::DisplayName() const
{
    return m_currentFile.isEmpty() ? UnnamedText() : ProfileBaseName(m_currentFile);
}

QString Document::NameWithExtension() const
{
    return m_currentFile.isEmpty() ? UnnamedText() : QFileInfo(m_currentFile).fileName();
}

QString Document::Caption() const
{
    return DisplayName() + " - Padmapper"_L1;
}

void Document::SetAction(PhoneKey key, const KeyAction &action)
{
    const Content before = CurrentContent();
    KeyAction commentOnly = m_keymap[key];
    commentOnly.Comment = action.Comment;
    m_keymap[key] = action;
    m_isSaved = false;
    emit KeyActionChanged(key);
    Record(before, true, commentOnly == action ? key : -1);
}

void Document::SetCurrentFile(const QString &path)
{
    if (m_currentFile == path)
        return;
    m_currentFile = path;
    emit CurrentFileChanged();
}

bool Document::ReadKeymap(const QString &source, bool isText, KeymapReadErrors fetched)
{
    const auto report = [this](const KeymapReadErrors &errors) {
        emit MessageRaised(DocumentMessage{ReportKeymapErrors(errors), KeymapReadErrorTitle(),
                                           DocumentMessage::Icon::Critical});
    };
    std::optional<QString> text = source;
    if (!isText) {
        // A file that cannot be read changes nothing: it holds no keymap.
        text = ReadKeymapFile(source, fetched);
        if (!text) {
            report(fetched);
            return false;
        }
    }
    if (ReadKeymapText(m_keymap, *text, true, &fetched))
        report(fetched);
    if (const QString note = KeymapReadNote(fetched); !note.isEmpty())
        emit MessageRaised(DocumentMessage{note, LanguageText(ProfileText::NoteTitle),
                                           DocumentMessage::Icon::Exclamation});
    emit KeymapReplaced();
    return true;
}

void Document::Raise(ProfileMessage message, const FileError &cause)
{
    emit MessageRaised(DocumentMessage{ProfileMessageText(message, cause), ProfileMessageTitle(message),
                                       DocumentMessage::Icon::Critical});
}

void Document::ReadAhead(const QString &path)
{
    DropReadAhead();
    ReadAheadProfile ahead;
    ahead.Path = path;
    const QFileInfo file(path);
    ahead.Size = file.size();
    ahead.Modified = file.lastModified();
    ahead.Opened = OpenProfileArchive(path);
    if (!ahead.Opened.PictureTempPath.isEmpty())
        ahead.Picture = LoadPictureFile(ahead.Opened.PictureTempPath);
    m_readAhead = std::move(ahead);
}

void Document::DropReadAhead()
{
    // Its extracted picture is of no use any more.
    if (m_readAhead && !m_readAhead->Opened.PictureTempPath.isEmpty())
        QFile::remove(m_readAhead->Opened.PictureTempPath);
    m_readAhead.reset();
}

std::optional<Document::ReadAheadProfile> Document::TakeReadAhead(const QString &path)
{
    const QFileInfo file(path);
    if (!m_readAhead || m_readAhead->Path != path || file.size() != m_readAhead->Size
        || file.lastModified() != m_readAhead->Modified) {
        DropReadAhead();
        return std::nullopt;
    }
    std::optional<ReadAheadProfile> ahead = std::move(m_readAhead);
    m_readAhead.reset();
    return ahead;
}

bool Document::OpenProfile(const QString &path)
{
    std::optional<ReadAheadProfile> ahead = TakeReadAhead(path);
    const OpenedProfile opened = ahead ? ahead->Opened : OpenProfileArchive(path);
    for (const ProfileMessage message : opened.Messages)
        Raise(message, message == ProfileMessage::ExtractingArchiveFailed ? opened.Problem : FileError());
    if (!opened.Opened)
        return !opened.Problem.Any();
    SetCurrentFile(path);
    // A profile without picture keeps the picture shown so far.
    if (!opened.PictureTempPath.isEmpty()) {
        m_picture.PictureTempPath = opened.PictureTempPath;
        m_picture.PictureName = opened.PictureName;
        if (ahead) {
            m_picture.Image = ahead->Picture;
            emit PictureChanged();
        } else {
            AdoptPicture(opened.PictureTempPath);
        }
    }
    ReadKeymap(opened.KeymapText, true, opened.KeymapErrors);
    m_isSaved = true;
    StartHistory();
    return true;
}

bool Document::AdoptPicture(const QString &path)
{
    if (path.isEmpty())
        return false;
    FileError copyError;
    const bool decoded = ::AdoptPicture(path, m_picture, &copyError);
    if (copyError.Any()) {
        Raise(ProfileMessage::CreatingFileFailed, copyError);
        return false;
    }
    emit PictureChanged();
    return decoded;
}

bool Document::AdoptDroppedPicture(const QString &path)
{
    // Taken into a copy first: a file that is no picture must not blank the
    // picture shown.
    ProfilePicture dropped = m_picture;
    FileError copyError;
    const bool decoded = ::AdoptPicture(path, dropped, &copyError);
    if (copyError.Any()) {
        Raise(ProfileMessage::CreatingFileFailed, copyError);
        return false;
    }
    if (!decoded) {
        if (dropped.PictureTempPath != m_picture.PictureTempPath)
            RemoveFile(dropped.PictureTempPath);
        const QString text = FillPlaceholders(LanguageText(ProfileText::NotAPicture),
                                              {{"%f"_L1, QFileInfo(path).fileName()}});
        emit MessageRaised(DocumentMessage{text, LanguageText(ProfileText::NoteTitle),
                                           DocumentMessage::Icon::Exclamation});
        return false;
    }
    m_picture = std::move(dropped);
    emit PictureChanged();
    return true;
}

void Document::RemovePicture()
{
    // The temporary copy stays on the list of temporary files until exit.
    m_picture = ProfilePicture();
    emit PictureChanged();
}

bool Document::SaveProfile(QString &path, bool asCopy)
{
    std::optional<ProfileMessage> message;
    FileError cause;
    if (!::SaveProfile(path, asCopy, m_keymap, m_picture, &message, &cause)) {
        if (message)
            Raise(*message, cause);
        return false;
    }
    if (!asCopy)
        SetCurrentFile(path);
    return true;
}
