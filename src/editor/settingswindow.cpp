// SPDX-License-Identifier: GPL-3.0-or-later
#include "settingswindow.h"

#include "phone/seriallink.h"
#include "settings/filetypes.h"
#include "settings/languagetext.h"
#include "settings/settingsstore.h"
#include "support/programpaths.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString SettingsText(const QString &key, const QString &english)
{
    return LanguageText(u"SettingsWindow"_s, key, english);
}

// A port list that asks the system again each time it opens.
class PortComboBox : public QComboBox
{
public:
    using QComboBox::QComboBox;
    void showPopup() override
    {
        const QString current = currentText();
        clear();
        addItems(OfferedPorts());
        setCurrentText(current);
        QComboBox::showPopup();
    }
};

constexpr int LanguageExtensionLength = 4; // ".lng"

} // namespace

QList<std::pair<QString, QString>> SettingsWindow::LanguageFiles()
{
    QList<std::pair<QString, QString>> files;
    QStringList seen;
    for (const QString &folder : ProgramDataFolders()) {
        const QDir dir(folder);
        for (const QString &file : dir.entryList({u"*.lng"_s}, QDir::Files)) {
            const QString name = file.left(file.size() - LanguageExtensionLength);
            if (seen.contains(name, Qt::CaseInsensitive))
                continue;
            seen << name;
            files.append({name, dir.absoluteFilePath(file)});
        }
    }
    std::sort(files.begin(), files.end(), [](const auto &a, const auto &b) {
        return a.first.compare(b.first, Qt::CaseInsensitive) < 0;
    });
    return files;
}

SettingsWindow::SettingsWindow(SettingsStore &store, FileTypes &fileTypes, QWidget *parent)
    : QDialog(parent), m_store(store), m_fileTypes(fileTypes)
{
    setWindowTitle(SettingsText(u"Caption"_s, u"Settings"_s));
    m_fileTypes.RegisterFileTypes();
    const Settings settings = m_store.Read();

    auto *languageLabel = new QLabel(SettingsText(u"Label_Language"_s, u"Language:"_s), this);
    m_languages = new QListWidget(this);
    m_languages->setSelectionMode(QAbstractItemView::SingleSelection);
    languageLabel->setBuddy(m_languages);
    for (const auto &[name, path] : LanguageFiles()) {
        auto *item = new QListWidgetItem(name, m_languages);
        item->setData(Qt::UserRole, path);
        if (path.compare(settings.Language, Qt::CaseInsensitive) == 0)
            item->setSelected(true);
    }
    m_languages->setMaximumHeight(m_languages->sizeHintForRow(0) * 6 + 2 * m_languages->frameWidth() + 4);

    auto *types = new QGroupBox(SettingsText(u"Frame_FileTypes"_s, u"Registred Filetypes"_s), this);
    m_hidBox = new QCheckBox(SettingsText(u"Frame_hid"_s, u".hid - Remote Profile"_s), types);
    m_kcfBox = new QCheckBox(SettingsText(u"Frame_kcf"_s, u".kcf - Keymap"_s), types);
    m_hidBox->setChecked(m_fileTypes.BoundClass(FileType::Profile) == m_fileTypes.OwnClass(FileType::Profile));
    m_kcfBox->setChecked(m_fileTypes.BoundClass(FileType::Keymap) == m_fileTypes.OwnClass(FileType::Keymap));
    auto *typesLayout = new QVBoxLayout(types);
    typesLayout->addWidget(m_hidBox);
    typesLayout->addWidget(m_kcfBox);

    auto *connection = new QGroupBox(SettingsText(u"Frame_PhoneConnection"_s, u"Phone - Connection"_s), this);
    m_port = new PortComboBox(connection);
    m_port->setEditable(true);
    m_port->setInsertPolicy(QComboBox::NoInsert);
    m_port->addItems(OfferedPorts());
    m_port->setCurrentText(settings.Port.Name());
#ifndef Q_OS_WIN
    m_port->lineEdit()->setPlaceholderText(u"/dev/rfcomm0"_s);
#endif
    m_speed = new QComboBox(connection);
    m_speed->setEditable(true);
    m_speed->setInsertPolicy(QComboBox::NoInsert);
    for (const int speed : {921600, 460800, 256000, 230400, 115200, 57600, 19200, 9600, 2400})
        m_speed->addItem(QString::number(speed));
    m_speed->setCurrentText(QString::number(settings.Speed));
    auto *connectionLayout = new QFormLayout(connection);
    connectionLayout->addRow(SettingsText(u"Frame_Port"_s, u"COM - Port:"_s), m_port);
    connectionLayout->addRow(SettingsText(u"Frame_Speed"_s, u"Baudrate:"_s), m_speed);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(SettingsText(u"Button_OK"_s, u"OK"_s));
    buttons->button(QDialogButtonBox::Cancel)->setText(SettingsText(u"Button_Abort"_s, u"Abort"_s));
    connect(buttons, &QDialogButtonBox::accepted, this, &SettingsWindow::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SettingsWindow::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(languageLabel);
    layout->addWidget(m_languages);
    layout->addWidget(types);
    layout->addWidget(connection);
    layout->addWidget(buttons);
    setMinimumWidth(360);
}

void SettingsWindow::accept()
{
    for (const FileType type : {FileType::Profile, FileType::Keymap}) {
        const QString bound = m_fileTypes.BoundClass(type);
        const QString remembered = type == FileType::Profile ? u"LasthidClass"_s : u"LastKcfClass"_s;
        if (bound != m_fileTypes.OwnClass(type))
            m_store.SetString(remembered, bound);
        const bool checked = (type == FileType::Profile ? m_hidBox : m_kcfBox)->isChecked();
        // Unchecked hands the type back to the class it had before.
        m_fileTypes.Bind(type, checked ? m_fileTypes.OwnClass(type) : m_store.String(remembered));
    }

    Settings settings = m_store.Read();
    const QList<QListWidgetItem *> chosen = m_languages->selectedItems();
    if (!chosen.isEmpty())
        m_store.WriteLanguage(chosen.first()->data(Qt::UserRole).toString());

    // A blank port box, or a text that names no port, keeps the port.
    if (const std::optional<SerialPort> port = SerialPort::Parse(m_port->currentText().trimmed()))
        settings.Port = *port;
    bool numeric = false;
    const qint64 speed = m_speed->currentText().trimmed().toLongLong(&numeric);
    if (numeric)
        settings.Speed = SpeedInRange(speed);
    m_store.WritePort(settings.Port, settings.Speed);
    (void)m_store.Sync();
    QDialog::accept();
}
