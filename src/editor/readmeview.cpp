// SPDX-License-Identifier: GPL-3.0-or-later
#include "readmeview.h"

#include "editortexts.h"
#include "support/ansitext.h"

#include <QDesktopServices>
#include <QFile>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QStringDecoder>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

// Far beyond any readme; what is more is not shown.
constexpr qint64 LargestReadme = 16 * 1024 * 1024;

// The readmes shipped with the program are UTF-8; one written for Windows
// beside a language file of its own is in the ANSI code page.
QString ReadmeText(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (utf8.hasError())
        text = FromAnsi(bytes);
    return text.replace("\r\n"_L1, "\n"_L1);
}

} // namespace

void ShowReadme(const QString &path, QWidget *parent)
{
    if (path.isEmpty() || QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    auto *view = new QPlainTextEdit(parent);
    view->setWindowFlag(Qt::Window);
    view->setAttribute(Qt::WA_DeleteOnClose);
    view->setObjectName(u"readme"_s);
    view->setWindowTitle(LanguageText(EditorText::MenuReadme).remove(u'&'));
    view->setReadOnly(true);
    view->setPlainText(ReadmeText(file.read(LargestReadme)));
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetrics metrics(view->font());
    view->resize(metrics.horizontalAdvance(QString(84, u'x')), metrics.lineSpacing() * 36);
    view->show();
}
