// SPDX-License-Identifier: GPL-3.0-or-later
#include "filemessage.h"

#include "commontexts.h"

using namespace Qt::StringLiterals;

namespace {

QString CauseText(const FileError &error)
{
    switch (error.Problem) {
    case FileProblem::None:
        break;
    case FileProblem::Missing:
        return LanguageText(CommonText::FileMissing);
    case FileProblem::FolderMissing:
        return LanguageText(CommonText::FolderMissing);
    case FileProblem::NotRegularFile:
        return LanguageText(CommonText::NotRegularFile);
    case FileProblem::NoPermission:
        return LanguageText(CommonText::NoPermission);
    case FileProblem::DiskFull:
        return LanguageText(CommonText::DiskFull);
    case FileProblem::TooLarge:
        return LanguageText(CommonText::FileTooLarge);
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
