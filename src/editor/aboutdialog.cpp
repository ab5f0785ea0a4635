// SPDX-License-Identifier: GPL-3.0-or-later
#include "aboutdialog.h"

#include "editortexts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr auto LicenceUrl = "https://www.gnu.org/licenses/gpl-3.0.html"_L1;

} // namespace

QString AboutDialog::VersionText()
{
    return u"Version:   %1.%2.%3"_s.arg(PADMAPPER_VERSION_MAJOR)
        .arg(PADMAPPER_VERSION_MINOR)
        .arg(PADMAPPER_VERSION_PATCH);
}

AboutDialog::AboutDialog(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(WithoutAccessKey(LanguageText(EditorText::MenuAbout)));

    auto *title = new QLabel(u"Padmapper"_s, this);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    title->setFont(big);

    auto *what = new QLabel(this);
    what->setText(LanguageText(EditorText::AboutDescription));
    what->setWordWrap(true);
    auto *version = new QLabel(VersionText(), this);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_link = new QLabel(this);
    m_link->setText(u"<a href=\"%1\">%2</a>"_s.arg(LicenceUrl,
                                                   LanguageText(EditorText::AboutLicence).toHtmlEscaped()));
    m_link->setTextFormat(Qt::RichText);
    m_link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    m_link->setOpenExternalLinks(true);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto *texts = new QVBoxLayout;
    texts->addWidget(title);
    texts->addWidget(what);
    texts->addSpacing(8);
    texts->addWidget(version);
    texts->addWidget(m_link);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(texts);
    layout->addWidget(buttons);
    setMinimumWidth(380);
}
