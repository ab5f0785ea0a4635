// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings/languagetext.h"

// The messages about profiles and their archives, in enum order. The numbered
// keys are the numbers of ProfileMessage.
enum class ProfileText {
    NoPicture,
    CreatingArchiveFailed,
    ExtractingArchiveFailed,
    ArchiveEmpty,
    NoPictureEntry,
    NoKeymapEntry,
    ArchiveDamaged,
    ErrorTitle,
    NoteTitle,
    NotAProfile,
    NotAPicture,
    Count
};

inline constexpr auto ProfileTexts = UiTextTable<ProfileText>({
    {ProfileText::NoPicture, u"Errors", u"1", u"No Picture is loadet !"},
    {ProfileText::CreatingArchiveFailed, u"Errors", u"3", u"Creating Archive failed !"},
    {ProfileText::ExtractingArchiveFailed, u"Errors", u"4", u"Extracting Archive failed !"},
    {ProfileText::ArchiveEmpty, u"Errors", u"5", u"The Archive contained no Files !"},
    {ProfileText::NoPictureEntry, u"Errors", u"6", u"The Profile contains no Picture !"},
    {ProfileText::NoKeymapEntry, u"Errors", u"7", u"The Profile contains no Keymap !"},
    {ProfileText::ArchiveDamaged, u"Errors", u"ArchiveDamaged",
     u"The Archive is damaged: a file in it is cut short. What could be read is shown."},
    {ProfileText::ErrorTitle, u"Errors", u"Caption", u"Error"},
    {ProfileText::NoteTitle, u"Errors", u"Exclamation", u"Note !"},
    {ProfileText::NotAProfile, u"Errors", u"NotAProfile",
     u"%f is not a profile (a tar archive with a picture and a keymap)."},
    {ProfileText::NotAPicture, u"Errors", u"NotAPicture",
     u"%f is not a picture that can be read. The picture stays as it was."},
});

inline QString LanguageText(ProfileText text)
{
    return LanguageText(ProfileTexts[static_cast<std::size_t>(text)]);
}
