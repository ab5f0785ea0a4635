// SPDX-License-Identifier: GPL-3.0-or-later
#include "filemessage.h"

#include "languagetext.h"

using namespace Qt::StringLiterals;

namespace {

QString CauseText(const FileError &error)
{
    switch (error.Problem) {
    case FileProblem::None:
        break;
    case FileProblem::Missing:
        return LanguageText(u"Errors"_s, u"FileMissing"_s, u"the file does not exist"_s);
    case FileProblem::FolderMissing:
        return LanguageText(u"Errors"_s, u"FolderMissing"_s, u"the folder does not exist"_s);
    case FileProblem::NotRegularFile:
        return LanguageText(u"Errors"_s, u"NotRegularFile"_s, u"not a regular file"_s);
    case FileProblem::NoPermission:
        return LanguageText(u"Errors"_s, u"NoPermission"_s, u"permission denied"_s);
    case FileProblem::DiskFull:
        return LanguageText(u"Errors"_s, u"DiskFull"_s, u"the disk is full"_s);
    case FileProblem::TooLarge:
        return LanguageText(u"Errors"_s, u"FileTooLarge"_s, u"the file is too large"_s);
    case FileProblem::Other:
        return qt_error_string(error.SystemError);
    }
    return {};
}

} // namespace

QString FileFailureMessage(const QString &message, const FileError &error)
{
    if (!error.Any())
        return message;
    return message + "\r\n"_L1 + error.Path + ": "_L1 + CauseText(error);
}
