// SPDX-License-Identifier: GPL-3.0-or-later
#include "readmeview.h"

#include "editortexts.h"
#include "support/ansitext.h"

#include <QDesktopServices>
#include <QFile>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QProcess>
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

void ShowReadmeWindow(const QString &path, QWidget *parent)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    auto *view = new QPlainTextEdit(parent);
    view->setWindowFlag(Qt::Window);
    view->setAttribute(Qt::WA_DeleteOnClose);
    view->setObjectName(u"readme"_s);
    view->setWindowTitle(WithoutAccessKey(LanguageText(EditorText::MenuReadme)));
    view->setReadOnly(true);
    view->setPlainText(ReadmeText(file.read(LargestReadme)));
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetrics metrics(view->font());
    view->resize(metrics.horizontalAdvance(QString(84, u'x')), metrics.lineSpacing() * 36);
    view->show();
}

} // namespace

void ShowReadme(const QString &path, QWidget *parent)
{
    if (path.isEmpty())
        return;
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    // Qt counts xdg-open as done once it has started, even when it then finds
    // no program for text files; its exit status says whether one showed the
    // readme. It is not waited for: a viewer may keep it until it is closed.
    auto *opener = new QProcess(parent);
    opener->setStandardOutputFile(QProcess::nullDevice());
    opener->setStandardErrorFile(QProcess::nullDevice());
    QObject::connect(opener, &QProcess::finished, opener, [opener, path, parent](int code, QProcess::ExitStatus how) {
        if (how != QProcess::NormalExit || code != 0)
            ShowReadmeWindow(path, parent);
        opener->deleteLater();
    });
    QObject::connect(opener, &QProcess::errorOccurred, opener, [opener, path, parent](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        ShowReadmeWindow(path, parent);
        opener->deleteLater();
    });
    opener->start(u"xdg-open"_s, {path});
#else
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        ShowReadmeWindow(path, parent);
#endif
}
