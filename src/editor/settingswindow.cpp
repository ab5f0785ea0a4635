// SPDX-License-Identifier: GPL-3.0-or-later
#include "settingswindow.h"

#include "editortexts.h"
#include "phone/seriallink.h"
#include "settings/filetypes.h"
#include "settings/settingsstore.h"
#include "support/programpaths.h"
#include "transport/uploadjobs.h"

#ifdef PADMAPPER_HAS_DBUS
#include "bluetooth/paireddevices.h"
#endif

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
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

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

// Of each listed phone, beside its shown text.
constexpr int AddressRole = Qt::UserRole;
constexpr int AliasRole = Qt::UserRole + 1;

#ifdef PADMAPPER_HAS_DBUS
// A window waits no longer than this for BlueZ to list the paired phones.
constexpr int PairedListTimeoutMs = 2000;

// The paired phones as "Name (address)", asked for again each time the list
// opens (a phone paired meanwhile shows up); an address may also be typed.
class PhoneComboBox : public QComboBox
{
public:
    using QComboBox::QComboBox;
    void Refresh()
    {
        const QString current = currentText();
        clear();
        for (const PairedDevice &device : PairedDevices(PairedListTimeoutMs).value_or(QList<PairedDevice>())) {
            addItem(u"%1 (%2)"_s.arg(device.Alias, device.Address));
            setItemData(count() - 1, device.Address, AddressRole);
            setItemData(count() - 1, device.Alias, AliasRole);
        }
        setCurrentText(current);
    }
    void showPopup() override
    {
        Refresh();
        QComboBox::showPopup();
    }
};
#endif

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
    std::sort(files.begin(), files.end(),
              [](const auto &a, const auto &b) { return a.first.compare(b.first, Qt::CaseInsensitive) < 0; });
    return files;
}

SettingsWindow::SettingsWindow(SettingsStore &store, FileTypes &fileTypes, QWidget *parent)
    : QDialog(parent), m_store(store), m_fileTypes(fileTypes)
{
    setWindowTitle(LanguageText(EditorText::SettingsCaption));
    m_fileTypes.RegisterFileTypes();
    const Settings settings = m_store.Read();

    auto *languageLabel = new QLabel(LanguageText(EditorText::SettingsLanguage), this);
    m_languages = new QListWidget(this);
    m_languages->setSelectionMode(QAbstractItemView::SingleSelection);
    languageLabel->setBuddy(m_languages);
    m_languages->setAccessibleName(WithoutAccessKey(languageLabel->text()));
    for (const auto &[name, path] : LanguageFiles()) {
        auto *item = new QListWidgetItem(name, m_languages);
        item->setData(Qt::UserRole, path);
        if (path.compare(settings.Language, Qt::CaseInsensitive) == 0)
            item->setSelected(true);
    }
    m_languages->setMaximumHeight(m_languages->sizeHintForRow(0) * 6 + 2 * m_languages->frameWidth() + 4);

    auto *types = new QGroupBox(LanguageText(EditorText::SettingsFileTypes), this);
    m_hidBox = new QCheckBox(LanguageText(EditorText::SettingsHid), types);
    m_kcfBox = new QCheckBox(LanguageText(EditorText::SettingsKcf), types);
    m_hidBox->setChecked(m_fileTypes.BoundClass(FileType::Profile) == m_fileTypes.OwnClass(FileType::Profile));
    m_kcfBox->setChecked(m_fileTypes.BoundClass(FileType::Keymap) == m_fileTypes.OwnClass(FileType::Keymap));
    auto *typesLayout = new QVBoxLayout(types);
    typesLayout->addWidget(m_hidBox);
    typesLayout->addWidget(m_kcfBox);

    auto *connection = new QGroupBox(LanguageText(EditorText::SettingsConnection), this);
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
    connectionLayout->addRow(LanguageText(EditorText::SettingsPort), m_port);
    connectionLayout->addRow(LanguageText(EditorText::SettingsSpeed), m_speed);
    if (BluetoothAvailable())
        AddBluetoothChoice(*connectionLayout, settings);
    // A screen reader names a list's text field and its drop-down by the
    // list's label, as it names the list.
    for (QComboBox *list : {m_port, m_speed, m_phone, m_method}) {
        auto *label = list ? qobject_cast<QLabel *>(connectionLayout->labelForField(list)) : nullptr;
        if (!label)
            continue;
        list->view()->setAccessibleName(WithoutAccessKey(label->text()));
        if (list->lineEdit())
            list->lineEdit()->setAccessibleName(WithoutAccessKey(label->text()));
    }

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(LanguageText(EditorText::SettingsOk));
    buttons->button(QDialogButtonBox::Cancel)->setText(LanguageText(EditorText::SettingsAbort));
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
    if (m_bluetoothChoice) {
        BluetoothPhone phone = ChosenPhone().value_or(settings.Phone);
        phone.Method = ObexMethod(m_method->currentIndex());
        m_store.WriteConnection(m_bluetoothChoice->isChecked() ? PhoneConnection::Bluetooth : PhoneConnection::Serial,
                                phone);
    }
    (void)m_store.Sync();
    QDialog::accept();
}

void SettingsWindow::AddBluetoothChoice(QFormLayout &layout, const Settings &settings)
{
    auto *connection = layout.parentWidget();
    m_serialChoice = new QRadioButton(LanguageText(EditorText::SettingsSerial), connection);
    m_bluetoothChoice = new QRadioButton(LanguageText(EditorText::SettingsBluetooth), connection);
    layout.insertRow(0, m_serialChoice);
    layout.addRow(m_bluetoothChoice);
#ifdef PADMAPPER_HAS_DBUS
    auto *phones = new PhoneComboBox(connection);
    phones->Refresh();
    m_phone = phones;
#else
    m_phone = new QComboBox(connection);
#endif
    m_phone->setEditable(true);
    m_phone->setInsertPolicy(QComboBox::NoInsert);
    m_phone->lineEdit()->setPlaceholderText(u"00:11:22:33:44:55"_s);
    // With no phone chosen yet, the first paired one is offered.
    const int listed = settings.Phone.IsSet() ? m_phone->findData(settings.Phone.Address, AddressRole) : 0;
    if (listed >= 0 && listed < m_phone->count())
        m_phone->setCurrentIndex(listed);
    else
        m_phone->setCurrentText(settings.Phone.IsSet() ? u"%1 (%2)"_s.arg(settings.Phone.Name, settings.Phone.Address)
                                                       : QString());
    m_method = new QComboBox(connection);
    // In the order of ObexMethod.
    m_method->addItem(LanguageText(EditorText::SettingsMethodPush));
    m_method->addItem(LanguageText(EditorText::SettingsMethodFtp));
    m_method->setCurrentIndex(int(settings.Phone.Method));
    layout.addRow(LanguageText(EditorText::SettingsPhone), m_phone);
    layout.addRow(LanguageText(EditorText::SettingsMethod), m_method);

    (settings.Connection == PhoneConnection::Bluetooth ? m_bluetoothChoice : m_serialChoice)->setChecked(true);
    connect(m_bluetoothChoice, &QRadioButton::toggled, this, &SettingsWindow::ShowConnectionChoice);
    ShowConnectionChoice();
}

void SettingsWindow::ShowConnectionChoice()
{
    const bool bluetooth = m_bluetoothChoice->isChecked();
    for (QWidget *serial : {static_cast<QWidget *>(m_port), static_cast<QWidget *>(m_speed)})
        serial->setEnabled(!bluetooth);
    m_phone->setEnabled(bluetooth);
    m_method->setEnabled(bluetooth);
}

std::optional<BluetoothPhone> SettingsWindow::ChosenPhone() const
{
    const QString text = m_phone->currentText().trimmed();
    // "Name (address)", as listed or as stored, or a bare address.
    const qsizetype open = text.lastIndexOf(u'(');
    const QString addressText = open >= 0 && text.endsWith(u')') ? text.mid(open + 1, text.size() - open - 2) : text;
    const std::optional<QString> address = ParseBluetoothAddress(addressText);
    if (!address)
        return std::nullopt;
    BluetoothPhone phone;
    phone.Address = *address;
    const int listed = m_phone->findData(*address, AddressRole);
    phone.Name = listed >= 0 ? m_phone->itemData(listed, AliasRole).toString()
                             : (open >= 0 ? text.left(open).trimmed() : QString());
    return phone;
}
