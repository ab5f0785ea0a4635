// SPDX-License-Identifier: GPL-3.0-or-later
#include "uploadjob.h"

#include "phonetexts.h"
#include "settings/commontexts.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView ProfileExtension = ".hid"_L1;

QString FileNamePart(const QString &path)
{
    // Paths may come with either separator, whatever the system.
    const qsizetype slash = std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
    return path.mid(slash + 1);
}

} // namespace

bool UploadRequest::HasConnection() const
{
    if (Connection == PhoneConnection::Bluetooth)
        return Phone.IsSet();
    return Port.IsSet() && Speed != 0;
}

QString RemoteProfileName(const QString &documentPath)
{
    if (documentPath.isEmpty())
        return LanguageText(CommonText::Unnamed) + ProfileExtension;
    QString name = FileNamePart(documentPath);
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot >= 0)
        name.truncate(dot);
    return name + ProfileExtension;
}

int UploadJob::Percent(qint64 bytesSent, qint64 total)
{
    return total > 0 ? int(bytesSent * 100 / total) : 100;
}

QString UploadJob::ProgressCaption(int percent)
{
    return QString::number(percent) + "%  "_L1 + LanguageText(PhoneText::UploadCaption);
}
