// SPDX-License-Identifier: GPL-3.0-or-later
#include "templatechooser.h"

#include "editortexts.h"
#include "keymap/keyactiontext.h"
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "support/programpaths.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSet>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto TemplatesSubfolder = "templates"_L1;

struct BundledTemplate
{
    QLatin1StringView FileName;
    EditorText Title;
};

constexpr BundledTemplate BundledTemplates[] = {
    {"Desktop"_L1, EditorText::TemplateDesktop},
    {"Presentation"_L1, EditorText::TemplatePresentation},
    {"MediaPlayer"_L1, EditorText::TemplateMediaPlayer},
    {"WebBrowser"_L1, EditorText::TemplateWebBrowser},
    {"Mouse"_L1, EditorText::TemplateMouse},
    {"ImageViewer"_L1, EditorText::TemplateImageViewer},
};

} // namespace

QString TemplateTitle(const QString &path)
{
    QString name = QFileInfo(path).completeBaseName();
    for (const BundledTemplate &bundled : BundledTemplates) {
        if (name == bundled.FileName)
            return LanguageText(bundled.Title);
    }
    return name.replace(u'_', u' ');
}

QList<ProfileTemplate> ProfileTemplates()
{
    QList<ProfileTemplate> found;
    QSet<QString> names;
    for (const QString &folder : ProgramDataFolders()) {
        const QDir templates(folder + u'/' + TemplatesSubfolder);
        for (const QFileInfo &file : templates.entryInfoList({u"*.kcf"_s}, QDir::Files | QDir::Readable)) {
            if (!names.contains(file.fileName())) {
                names.insert(file.fileName());
                found.append({file.absoluteFilePath(), TemplateTitle(file.fileName())});
            }
        }
    }
    std::sort(found.begin(), found.end(), [](const ProfileTemplate &a, const ProfileTemplate &b) {
        return QString::localeAwareCompare(a.Title, b.Title) < 0;
    });
    return found;
}

TemplateChooser::TemplateChooser(QWidget *parent) : QDialog(parent), m_templates(ProfileTemplates())
{
    setWindowTitle(LanguageText(EditorText::TemplateCaption));
    m_list = new QListWidget(this);
    for (const ProfileTemplate &entry : std::as_const(m_templates))
        m_list->addItem(entry.Title);
    m_keys = new QTreeWidget(this);
    m_keys->setRootIsDecorated(false);
    m_keys->setSelectionMode(QAbstractItemView::NoSelection);
    m_keys->setHeaderLabels({LanguageText(EditorText::TemplateKey), LanguageText(EditorText::TemplateAction),
                             LanguageText(EditorText::TemplateComment)});
    m_keys->header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(LanguageText(EditorText::TemplateOk));
    buttons->button(QDialogButtonBox::Cancel)->setText(LanguageText(EditorText::TemplateAbort));
    buttons->button(QDialogButtonBox::Ok)->setEnabled(!m_templates.isEmpty());
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::currentRowChanged, this, &TemplateChooser::ShowTemplate);
    connect(m_list, &QListWidget::itemActivated, this, &QDialog::accept);

    auto *label = new QLabel(LanguageText(EditorText::TemplateList), this);
    label->setBuddy(m_list);
    m_list->setAccessibleName(WithoutAccessKey(label->text()));
    auto *left = new QVBoxLayout;
    left->addWidget(label);
    left->addWidget(m_list);
    auto *panes = new QHBoxLayout;
    panes->addLayout(left, 1);
    panes->addWidget(m_keys, 3);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(panes);
    layout->addWidget(buttons);

    m_list->setCurrentRow(0);
    const QFontMetrics metrics(font());
    resize(metrics.averageCharWidth() * 140, metrics.lineSpacing() * 30);
}

QString TemplateChooser::ChosenPath() const
{
    const int row = m_list->currentRow();
    return row >= 0 && row < m_templates.size() ? m_templates.at(row).Path : QString();
}

void TemplateChooser::ShowTemplate(int row)
{
    m_keys->clear();
    if (row < 0 || row >= m_templates.size())
        return;
    // A screen reader calls the table of keys by the template it shows.
    m_keys->setAccessibleName(m_templates.at(row).Title);
    // Only a look: what is wrong in the file is reported when it is opened.
    Keymap keymap;
    KeymapReadErrors ignored;
    (void)ReadKeymapText(keymap, m_templates.at(row).Path, false, &ignored);
    const KeyActionTexts texts = KeyActionTexts::Load();
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        (void)new QTreeWidgetItem(m_keys, {PhoneKeyDisplayName(key), KeyActionToolTip(keymap[key], texts).trimmed(),
                                           keymap[key].Comment});
    }
}
