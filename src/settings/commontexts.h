// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "languagetext.h"

// The texts of this module (the causes of a failed file access) and those that
// modules which do not use each other share: one row each, the rows in the
// order of the enum.
enum class CommonText {
    FileMissing,
    FolderMissing,
    NotRegularFile,
    NoPermission,
    DiskFull,
    FileTooLarge,
    Unnamed, // a document that has no file yet
    CreatingFileFailed, // writing a temporary file
    Locale, // of the language file, for Qt's own texts; no built-in value
    Count
};

inline constexpr auto CommonTexts = UiTextTable<CommonText>({
    {CommonText::FileMissing, u"Errors", u"FileMissing", u"the file does not exist"},
    {CommonText::FolderMissing, u"Errors", u"FolderMissing", u"the folder does not exist"},
    {CommonText::NotRegularFile, u"Errors", u"NotRegularFile", u"not a regular file"},
    {CommonText::NoPermission, u"Errors", u"NoPermission", u"permission denied"},
    {CommonText::DiskFull, u"Errors", u"DiskFull", u"the disk is full"},
    {CommonText::FileTooLarge, u"Errors", u"FileTooLarge", u"the file is too large"},
    {CommonText::Unnamed, u"CommonDialog", u"File_Unnamed", u"Unnamed"},
    {CommonText::CreatingFileFailed, u"Errors", u"8", u"Creating File failed !"},
    {CommonText::Locale, u"Language", u"Locale", u""},
});

inline QString LanguageText(CommonText text)
{
    return LanguageText(CommonTexts[static_cast<std::size_t>(text)]);
}
