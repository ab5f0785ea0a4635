// SPDX-License-Identifier: GPL-3.0-or-later
#include "phoneconnection.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

std::optional<QString> ParseBluetoothAddress(const QString &text)
{
    static const QRegularExpression address(u"^[0-9A-Fa-f]{2}([:-][0-9A-Fa-f]{2}){5}$"_s);
    const QString trimmed = text.trimmed();
    if (!address.match(trimmed).hasMatch())
        return std::nullopt;
    return trimmed.toUpper().replace(u'-', u':');
}

QString ObexMethodName(ObexMethod method)
{
    return method == ObexMethod::FileTransfer ? u"FTP"_s : u"Push"_s;
}

std::optional<ObexMethod> ParseObexMethod(const QString &text)
{
    if (text.compare("push"_L1, Qt::CaseInsensitive) == 0)
        return ObexMethod::Push;
    if (text.compare("ftp"_L1, Qt::CaseInsensitive) == 0)
        return ObexMethod::FileTransfer;
    return std::nullopt;
}
