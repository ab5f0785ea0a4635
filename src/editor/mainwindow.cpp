// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow.h"

#include "aboutdialog.h"
#include "actioneditor.h"
#include "editordialogs.h"
#include "heldkeys.h"
#include "keymapview.h"
#include "keymap/keyboardcapture.h"
#include "keymap/keymapwriter.h"
#include "keymap/keytable.h"
#include "phonekeypad.h"
#include "settingswindow.h"
#include "uploadwindow.h"
#include "phone/profileupload.h"
#include "profile/document.h"
#include "profile/picture.h"
#include "profile/tempfiles.h"
#include "settings/languagetext.h"
#include "settings/readme.h"
#include "support/nativefile.h"
#include "support/programpaths.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QThreadPool>
#include <QUrl>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

constexpr int CountdownInterval = 1000; // ms per tick
constexpr PhoneKey FirstFocusedKey = PhoneKeys::Digit1;

QString MainWindowText(const QString &key, const QString &english)
{
    return LanguageText(u"MainWindow"_s, key, english);
}

QString DialogText(const QString &key, const QString &english)
{
    return LanguageText(u"CommonDialog"_s, key, english);
}

// The names of the keys that show symbols instead of words.
struct SymbolKeyName
{
    PhoneKey Key;
    const char16_t *LanguageKey;
    const char16_t *English;
};
constexpr std::array<SymbolKeyName, 8> SymbolKeyNames = {{
    {PhoneKeys::Joy, u"Frame_JoystickPress", u"Joystick press"},
    {PhoneKeys::Left, u"Frame_JoystickLeft", u"Joystick left"},
    {PhoneKeys::Up, u"Frame_JoystickUp", u"Joystick up"},
    {PhoneKeys::Right, u"Frame_JoystickRight", u"Joystick right"},
    {PhoneKeys::Down, u"Frame_JoystickDown", u"Joystick down"},
    {PhoneKeys::VolUp, u"Frame_Plus", u"Plus"},
    {PhoneKeys::VolDown, u"Frame_Minus", u"Minus"},
    {PhoneKeys::Cam, u"Frame_Camera", u"Camera"},
}};

// The modifier boxes in their order: left Shift, Ctrl, Alt, Windows, then the
// right ones.
constexpr std::array<std::int16_t ModifierFlags::*, ActionEditor::ModifierBoxCount> ModifierBoxFlags = {
    &ModifierFlags::LeftShift,  &ModifierFlags::LeftCtrl,  &ModifierFlags::LeftAlt,  &ModifierFlags::LeftWin,
    &ModifierFlags::RightShift, &ModifierFlags::RightCtrl, &ModifierFlags::RightAlt, &ModifierFlags::RightWin,
};

// The program's own windows. When one of them hands the activation back, the
// main window puts the focus on key "1" as when it first opened; message boxes
// and file dialogs belong to the command that showed them and leave the focus
// where it was, and so does coming back from another program.
bool IsProgramWindow(QWidget *window)
{
    return qobject_cast<AboutDialog *>(window) || qobject_cast<KeymapView *>(window)
           || qobject_cast<SettingsWindow *>(window) || qobject_cast<UploadWindow *>(window);
}

bool IsModifierKey(int virtualKey)
{
    using namespace ModifierKeys;
    for (const int modifier : {LeftShift, RightShift, LeftCtrl, RightCtrl, LeftAlt, RightAlt, LeftWin, RightWin})
        if (virtualKey == modifier)
            return true;
    return virtualKey >= 16 && virtualKey <= 18; // the generic Shift, Ctrl and Alt
}

} // namespace

MainWindow::MainWindow(EditorDialogs &dialogs, SettingsStore &store, QWidget *parent)
    : QMainWindow(parent), m_dialogs(dialogs), m_store(store)
{
    // Setting up the font database takes longer than anything else at start-up.
    // It runs on a thread of its own while the parts that need no font are made;
    // the first text to be measured waits for it.
    auto setUpFonts = std::make_shared<std::packaged_task<void()>>([] { (void)QFontDatabase::families(); });
    m_fontsSetUp = setUpFonts->get_future();
    QThreadPool::globalInstance()->start([setUpFonts] { (*setUpFonts)(); });

    m_document = new Document(this);
    m_keypad = new PhoneKeypad(this);
    BuildMenus();
    // Most starts show the default profile. Read now, it costs no time: the
    // editor below waits for the fonts anyway. It is used at the end of start-up
    // unless another file is opened instead.
    if (const QString defaultProfile = FindProgramFile(u"Desktop.hid"_s); !defaultProfile.isEmpty())
        m_document->ReadAhead(defaultProfile);
    m_editor = new ActionEditor(this);
    m_heldKeys = new HeldKeys(this);
    qApp->installEventFilter(m_heldKeys);

    m_saveButton = new QPushButton(this);
    m_sendButton = new QPushButton(this);
    m_loadPictureButton = new QPushButton(this);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_loadPictureButton);
    buttons->addStretch(1);
    buttons->addWidget(m_sendButton);
    buttons->addWidget(m_saveButton);

    auto *right = new QVBoxLayout;
    right->addWidget(m_editor, 1);
    right->addLayout(buttons);

    auto *central = new QWidget(this);
    auto *layout = new QHBoxLayout(central);
    layout->addWidget(m_keypad, 1);
    layout->addLayout(right, 1);
    setCentralWidget(central);

    connect(m_document, &Document::MessageRaised, this, &MainWindow::ShowMessage);
    connect(m_document, &Document::PictureChanged, this, [this] {
        m_keypad->SetPicture(m_document->Picture().Image);
        UpdateCaption();
    });
    connect(m_document, &Document::CurrentFileChanged, this, &MainWindow::UpdateCaption);
    connect(m_document, &Document::KeymapReplaced, this, [this] {
        RefreshKeyDisplay(-1);
        UpdateToolTip(-1);
    });

    connect(m_keypad, &PhoneKeypad::KeyButtonFocused, this, &MainWindow::RefreshKeyDisplay);
    connect(m_keypad, &PhoneKeypad::KeyButtonReleased, this, &MainWindow::RefreshKeyDisplay);
    connect(m_keypad, &PhoneKeypad::KeyButtonFocusLost, this, [this] { RefreshKeyDisplay(-1); });

    connect(m_editor, &ActionEditor::ModifierBoxClicked, this, &MainWindow::ModifierBoxClicked);
    connect(m_editor, &ActionEditor::DeviceChosen, this, &MainWindow::DeviceChosen);
    connect(m_editor, &ActionEditor::SpecialKeyChanged, this, &MainWindow::SpecialKeyChanged);
    connect(m_editor, &ActionEditor::MouseOptionClicked, this, &MainWindow::MouseOptionClicked);
    connect(m_editor, &ActionEditor::CommentEdited, this, &MainWindow::CommentEdited);
    connect(m_editor->SnapshotButton(), &QPushButton::clicked, this, &MainWindow::StartSnapshot);

    connect(m_saveButton, &QPushButton::clicked, this, [this] { (void)Save(); });
    connect(m_sendButton, &QPushButton::clicked, this, &MainWindow::SendProfile);
    connect(m_loadPictureButton, &QPushButton::clicked, this, &MainWindow::ImportPicture);

    m_focusWindowWatch
        = connect(qApp, &QGuiApplication::focusWindowChanged, this, &MainWindow::FocusWindowChanged);

    m_countdown.setInterval(CountdownInterval);
    connect(&m_countdown, &QTimer::timeout, this, &MainWindow::CountdownTick);

    UpdateCaption();
}

MainWindow::~MainWindow()
{
    qApp->removeEventFilter(m_heldKeys);
    // Tearing the window down moves the focus; this half-destroyed window must
    // not be told.
    disconnect(m_focusWindowWatch);
    // The font database must not be set up after the application is gone.
    if (m_fontsSetUp.valid())
        m_fontsSetUp.wait();
}

void MainWindow::BuildMenus()
{
    m_fileMenu = menuBar()->addMenu(QString());
    m_openAction = m_fileMenu->addAction(QString(), this, &MainWindow::Open);
    m_openAction->setShortcut(QKeySequence::Open);
    m_saveAction = m_fileMenu->addAction(QString(), this, [this] { (void)Save(); });
    m_saveAction->setShortcut(QKeySequence::Save);
    m_saveAsAction = m_fileMenu->addAction(QString(), this, [this] { (void)SaveAs(); });
    m_saveAsAction->setShortcut(QKeySequence::SaveAs);
    m_fileMenu->addSeparator();
    m_importMenu = m_fileMenu->addMenu(QString());
    m_importPictureAction = m_importMenu->addAction(QString(), this, &MainWindow::ImportPicture);
    m_importKeymapAction = m_importMenu->addAction(QString(), this, &MainWindow::ImportKeymap);
    m_exportMenu = m_fileMenu->addMenu(QString());
    m_exportPictureAction = m_exportMenu->addAction(QString(), this, &MainWindow::ExportPicture);
    m_exportKeymapAction = m_exportMenu->addAction(QString(), this, &MainWindow::ExportKeymap);
    m_fileMenu->addSeparator();
    m_uploadAction = m_fileMenu->addAction(QString(), this, &MainWindow::SendProfile);
    m_viewKeymapAction = m_fileMenu->addAction(QString(), this, &MainWindow::ViewKeymap);
    m_settingsAction = m_fileMenu->addAction(QString(), this, &MainWindow::OpenSettings);
    m_settingsAction->setMenuRole(QAction::PreferencesRole);
    m_fileMenu->addSeparator();
    m_exitAction = m_fileMenu->addAction(QString(), this, &QWidget::close);
    m_exitAction->setShortcut(QKeySequence::Quit);
    m_exitAction->setMenuRole(QAction::QuitRole);

    m_helpMenu = menuBar()->addMenu(QString());
    m_readmeAction = m_helpMenu->addAction(QString(), this, &MainWindow::OpenReadme);
    m_readmeAction->setShortcut(QKeySequence::HelpContents);
    m_aboutAction = m_helpMenu->addAction(QString(), this, &MainWindow::About);
    m_aboutAction->setMenuRole(QAction::AboutRole);

    // The picture's own menu, on the phone's screen.
    m_pictureMenu = new QMenu(this);
    m_popUpLoadAction = m_pictureMenu->addAction(QString(), this, &MainWindow::ImportPicture);
    m_popUpSaveAction = m_pictureMenu->addAction(QString(), this, &MainWindow::ExportPicture);
    QWidget *screen = m_keypad->ScreenArea();
    screen->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(screen, &QWidget::customContextMenuRequested, this,
            [this, screen](const QPoint &at) { m_pictureMenu->popup(screen->mapToGlobal(at)); });
    setAcceptDrops(true);
}

void MainWindow::Startup(const QStringList &arguments)
{
    setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    m_settings = m_store.Read();
    SetLanguage(m_settings.Language);
    ApplyMainWindowLanguage();
    if (m_settings.Left > 0)
        move(m_settings.Left, y());
    if (m_settings.Top > 0)
        move(x(), m_settings.Top);
    show();

    if (!m_settings.HasPort() && m_dialogs.ConfigurePort(this))
        TakeStoredSettings();

    QString path;
    if (!arguments.isEmpty()) {
        path = arguments.join(u' ');
        const qsizetype open = path.indexOf(u'"');
        if (open >= 0) {
            const qsizetype close = path.indexOf(u'"', open + 1);
            path = close < 0 ? path.mid(open + 1) : path.mid(open + 1, close - open - 1);
        }
    }
    // A file that is not there is passed over in silence; one that is there
    // but cannot be read gets its message before the default document comes.
    bool opened = false;
    if (!path.isEmpty() && PathExists(path)) {
        const QString extension = QFileInfo(path).suffix().toLower();
        if (extension == "hid"_L1 || extension == "tar"_L1) {
            QCoreApplication::processEvents();
            opened = m_document->OpenProfile(AbsoluteFilePath(path));
            m_document->SetSaved(true);
        } else if (extension == "kcf"_L1 && m_document->ReadKeymap(AbsoluteFilePath(path), false)) {
            m_document->SetCurrentFile(AbsoluteFilePath(path));
            UpdateCaption();
            m_document->SetSaved(true);
            opened = true;
        }
    }
    if (opened)
        m_document->DropReadAhead();
    else
        OpenDefaultProfile();
    RefreshKeyDisplay(FirstFocusedKey);
    m_keypad->CMD(FirstFocusedKey)->setFocus();
}

void MainWindow::OpenDefaultProfile()
{
    const QString defaultProfile = FindProgramFile(u"Desktop.hid"_s);
    if (!defaultProfile.isEmpty())
        m_document->OpenProfile(defaultProfile);
    m_document->SetCurrentFile(QString());
    UpdateCaption();
    m_document->SetSaved(true);
}

void MainWindow::ApplyMainWindowLanguage()
{
    m_fileMenu->setTitle(MainWindowText(u"Menu_File"_s, u"&File"_s));
    m_openAction->setText(MainWindowText(u"Menu_Open"_s, u"&Open"_s));
    m_saveAction->setText(MainWindowText(u"Menu_Save"_s, u"&Save"_s));
    m_saveAsAction->setText(MainWindowText(u"Menu_SaveAs"_s, u"Save &as..."_s));
    m_importMenu->setTitle(MainWindowText(u"Menu_Import"_s, u"&Import"_s));
    m_importPictureAction->setText(MainWindowText(u"Menu_Picture"_s, u"&Picture"_s));
    m_importKeymapAction->setText(MainWindowText(u"Menu_Keymap"_s, u"&Keymap"_s));
    m_exportMenu->setTitle(MainWindowText(u"Menu_Export"_s, u"&Export"_s));
    m_exportPictureAction->setText(MainWindowText(u"Menu_Picture"_s, u"&Picture"_s));
    m_exportKeymapAction->setText(MainWindowText(u"Menu_Keymap"_s, u"&Keymap"_s));
    m_uploadAction->setText(MainWindowText(u"Menu_FileUpload"_s, u"&Send Profile to Phone"_s));
    m_viewKeymapAction->setText(MainWindowText(u"Menu_ViewKeymap"_s, u"&View Keymap"_s));
    m_settingsAction->setText(MainWindowText(u"Menu_Settings"_s, u"Se&ttings"_s));
    m_exitAction->setText(MainWindowText(u"Menu_Exit"_s, u"&Exit"_s));
    m_helpMenu->setTitle(MainWindowText(u"Menu_Help"_s, u"&Help"_s));
    m_readmeAction->setText(MainWindowText(u"Menu_Readme"_s, u"&Readme"_s));
    m_aboutAction->setText(MainWindowText(u"Menu_About"_s, u"&About..."_s));
    m_popUpLoadAction->setText(MainWindowText(u"Menu_PopUpLoad"_s, u"&Load Picture"_s));
    m_popUpSaveAction->setText(MainWindowText(u"Menu_PopUpSave"_s, u"&Export Picture"_s));
    m_keypad->CMD(PhoneKeys::Lsk)->setText(MainWindowText(u"Button_Left"_s, u"&Left"_s));
    m_keypad->CMD(PhoneKeys::Rsk)->setText(MainWindowText(u"Button_Right"_s, u"&Right"_s));
    m_loadPictureButton->setText(MainWindowText(u"Button_LoadPicture"_s, u"Load Picture"_s));
    m_sendButton->setText(MainWindowText(u"Menu_FileUpload"_s, u"&Send Profile to Phone"_s).remove(u'&'));
    m_texts = KeyActionTexts::Load();
    ApplyKeyNameLanguage();
    m_editor->ApplyLanguage();
    UpdateCaption();
    UpdateToolTip(-1);
    RefreshKeyDisplay(-1);
}

void MainWindow::UpdateCaption()
{
    setWindowTitle(m_document->Caption());
    const bool profile = !m_document->IsKeymapDocument();
    m_saveButton->setText(profile ? MainWindowText(u"Button_SaveProfile"_s, u"Save Profile"_s)
                                  : MainWindowText(u"Button_SaveKeymap"_s, u"Save Keymap"_s));
    m_sendButton->setEnabled(profile && m_uploadAction->isEnabled());
    m_popUpSaveAction->setEnabled(!m_document->Picture().PictureTempPath.isEmpty());
    m_exportPictureAction->setEnabled(m_popUpSaveAction->isEnabled());
}

bool MainWindow::CheckSaved()
{
    if (m_document->IsSaved())
        return true;
    QString text = LanguageText(u"Errors"_s, u"16"_s, u"Save changes to %f ?"_s);
    text.replace("%f"_L1, m_document->NameWithExtension());
    const QString title = LanguageText(u"Errors"_s, u"Exclamation"_s, u"Note!"_s);
    switch (m_dialogs.AskYesNoCancel(this, text, title)) {
    case EditorDialogs::Answer::Cancel:
        return false;
    case EditorDialogs::Answer::Yes:
        (void)Save();
        return true;
    case EditorDialogs::Answer::No:
        return true;
    }
    return true;
}

QString MainWindow::KeyDisplayText(int index) const
{
    for (const SymbolKeyName &symbol : SymbolKeyNames) {
        if (symbol.Key == index)
            return MainWindowText(QString::fromUtf16(symbol.LanguageKey), QString::fromUtf16(symbol.English));
    }
    QString caption = m_keypad->CMD(index)->text();
    return caption.remove(u'&');
}

void MainWindow::RefreshKeyDisplay(int index)
{
    if (index >= 0 && index < PhoneKeys::Count)
        m_activeButton = index;
    const bool saved = m_document->IsSaved();
    m_filling = true;
    m_editor->SetMessage(QString(), false);
    m_keypad->SetActiveButton(m_activeButton);
    m_editor->setTitle(m_texts.FrameText + " \""_L1 + KeyDisplayText(m_activeButton) + u'"');

    const KeyAction &action = m_document->Action(m_activeButton);
    {
        const QSignalBlocker deviceBlocker(m_editor->DeviceList());
        const QSignalBlocker keyBlocker(m_editor->SpecialKeyList());
        if (QAbstractButton *option = m_editor->MouseOption(action.MouseAction))
            option->setChecked(true);
        m_editor->ShowMovementPicture(action.MouseAction);
        m_editor->DeviceList()->setCurrentIndex(action.IsMouse ? 1 : 0);
        m_editor->ShowMousePanel(action.IsMouse);
        m_editor->SpecialKeyList()->setCurrentText(KeyDisplayName(action.KeyCode));
        m_editor->CommentBox()->setText(action.Comment);
        int modifiers = action.Modifiers;
        const ModifierFlags flags = ModifierToFlags(modifiers);
        for (int i = 0; i < ActionEditor::ModifierBoxCount; ++i)
            m_editor->ModifierBox(i)->setChecked(flags.*ModifierBoxFlags[static_cast<std::size_t>(i)] != 0);
    }
    m_filling = false;
    m_document->SetSaved(saved);
}

void MainWindow::UpdateToolTip(int scope)
{
    const int first = scope == -1 ? 0 : m_activeButton;
    const int last = scope == -1 ? PhoneKeys::Count - 1 : m_activeButton;
    for (int key = first; key <= last; ++key)
        m_keypad->CMD(key)->setToolTip(KeyActionToolTip(m_document->Action(key), m_texts));
}

void MainWindow::ModifierBoxClicked()
{
    if (m_filling)
        return;
    ModifierFlags flags;
    for (int i = 0; i < ActionEditor::ModifierBoxCount; ++i)
        flags.*ModifierBoxFlags[static_cast<std::size_t>(i)] = m_editor->ModifierBox(i)->isChecked() ? 1 : 0;
    m_document->SetModifiers(m_activeButton, FlagsToModifier(flags));
    UpdateToolTip(0);
}

void MainWindow::DeviceChosen(int index)
{
    if (m_filling)
        return;
    const bool mouse = index == 1;
    m_editor->ShowMousePanel(mouse);
    // The tool tip is rebuilt before the device is stored: it shows the
    // previous device until the key's next edit or refresh.
    UpdateToolTip(0);
    m_document->SetIsMouse(m_activeButton, mouse);
}

void MainWindow::SpecialKeyChanged(const QString &text)
{
    if (m_filling)
        return;
    const int code = KeyCodeOfName(text.trimmed());
    m_document->SetKeyCode(m_activeButton, code);
    UpdateToolTip(0);
    CheckSupportedKey();
}

void MainWindow::CheckSupportedKey()
{
    if (KeyToUsage(m_document->Action(m_activeButton).KeyCode) == "00"_L1)
        m_editor->SetMessage(MainWindowText(u"Label_Error"_s, u"This key is not supported !"_s), true);
    else
        m_editor->SetMessage(QString(), false);
}

void MainWindow::MouseOptionClicked(int index)
{
    if (m_filling)
        return;
    m_document->SetMouseAction(m_activeButton, index);
    m_editor->ShowMovementPicture(index);
    UpdateToolTip(0);
}

void MainWindow::CommentEdited(const QString &text)
{
    if (m_filling)
        return;
    m_document->SetComment(m_activeButton, text);
    UpdateToolTip(0);
}

void MainWindow::SetKeyButtonsEnabled(bool enabled)
{
    m_keypad->SetKeyButtonsEnabled(enabled);
}

void MainWindow::FocusWindowChanged(QWindow *window)
{
    // No focus window: another program has the keyboard, and the window that
    // was active before it still decides.
    if (!window)
        return;
    if (window == windowHandle() && m_activationFocusesFirstKey)
        m_keypad->CMD(FirstFocusedKey)->setFocus(Qt::ActiveWindowFocusReason);
    m_activationFocusesFirstKey = IsProgramWindow(QApplication::activeWindow());
}

void MainWindow::StartSnapshot()
{
    if (m_countdown.isActive())
        return;
    m_ticks = 0;
    m_editor->SnapshotButton()->setText(u"3..."_s);
    SetKeyButtonsEnabled(false);
    m_editor->SetMessage(MainWindowText(u"Label_Press"_s, u"Please press the keys on the keyboard..."_s), false);
    m_heldKeys->SetSwallowing(true);
    m_countdown.start();
}

void MainWindow::CountdownTick()
{
    ++m_ticks;
    if (m_ticks == 1) {
        m_editor->SnapshotButton()->setText(u"2..."_s);
        return;
    }
    if (m_ticks == 2) {
        m_editor->SnapshotButton()->setText(u"1..."_s);
        return;
    }
    m_countdown.stop();
    m_heldKeys->SetSwallowing(false);
    CaptureKeyboard(m_activeButton);
}

void MainWindow::CaptureKeyboard(int index)
{
    QApplication::beep();
    const KeyboardState state = m_heldKeys->Snapshot();
    KeyAction action = m_document->Action(index);
    action.IsMouse = false;
    const bool found = ::CaptureKeyboard(action, state);
    m_document->SetAction(index, action);

    m_editor->SnapshotButton()->setText(MainWindowText(u"Button_SnapShot"_s, u"Snapshot"_s));
    SetKeyButtonsEnabled(true);
    RefreshKeyDisplay(-1);
    UpdateToolTip(0);
    // A held key the phone cannot send is named as such.
    bool unsupportedHeld = false;
    for (int code = 3; code < int(state.size()); ++code) {
        if (state[static_cast<std::size_t>(code)] > 1 && !IsModifierKey(code) && KeyToUsage(code) == "00"_L1)
            unsupportedHeld = true;
    }
    if (!found && unsupportedHeld)
        m_editor->SetMessage(MainWindowText(u"Label_Error"_s, u"This key is not supported !"_s), true);
}

void MainWindow::ShowMessage(const DocumentMessage &message)
{
    m_dialogs.ShowMessage(this, message);
}

void MainWindow::ShowWriteFailed(const FileError &cause)
{
    ShowMessage(DocumentMessage{ProfileMessageText(ProfileMessage::CreatingFileFailed, cause),
                                ProfileMessageTitle(ProfileMessage::CreatingFileFailed),
                                DocumentMessage::Icon::Critical});
}

void MainWindow::Open()
{
    if (!CheckSaved())
        return;
    const QString filter = DialogText(u"Filter_kcf_hid"_s, u"Remote Profile, Keymap (*.hid,*.kcf)"_s)
                           + "|*.hid;*.kcf|"_L1 + DialogText(u"Filter_tar"_s, u"Tar Archive (*.tar)"_s)
                           + "|*.tar"_L1;
    const QString path = m_dialogs.OpenFileName(this, DialogText(u"Caption_OpenHid"_s, QString()),
                                                m_settings.HidPath, filter);
    if (path.isEmpty())
        return;
    OpenFile(path);
}

void MainWindow::OpenFile(const QString &path)
{
    const QFileInfo info(path);
    const QString extension = info.suffix().toLower();
    if (extension == "hid"_L1 || extension == "tar"_L1) {
        m_settings.HidPath = info.absolutePath();
        m_document->OpenProfile(AbsoluteFilePath(path));
    } else if (extension == "kcf"_L1) {
        // Keymaps opened here move the profile folder, as they always did.
        m_settings.HidPath = info.absolutePath();
        if (!m_document->ReadKeymap(AbsoluteFilePath(path), false))
            return;
        m_document->RemovePicture();
        m_document->SetCurrentFile(AbsoluteFilePath(path));
        RefreshKeyDisplay(-1);
        UpdateCaption();
    }
}

bool MainWindow::Save()
{
    const QString file = m_document->CurrentFile();
    if (file.isEmpty())
        return SaveAs();
    const QString extension = QFileInfo(file).suffix().toLower();
    bool saved = false;
    if (extension == "kcf"_L1) {
        FileError cause;
        saved = WriteKeymapText(m_document->CurrentKeymap(), file, &cause);
        if (!saved)
            ShowWriteFailed(cause);
    } else {
        QString path = file;
        saved = m_document->SaveProfile(path, false);
    }
    if (saved)
        m_document->SetSaved(true);
    return saved;
}

bool MainWindow::SaveAs()
{
    const QString proposed = m_document->NameWithExtension();
    if (!m_document->IsKeymapDocument()) {
        const QString filter = DialogText(u"Filter_hid"_s, u"Remote Profiles (*.hid)"_s) + "|*.hid"_L1;
        const EditorDialogs::ChosenFile chosen = m_dialogs.SaveFileName(
            this, DialogText(u"Caption_Savehid"_s, u"Save Profile as..."_s),
            QDir(m_settings.HidPath).filePath(proposed), filter);
        QString path = SaveDialogPath(chosen, filter);
        if (path.isEmpty())
            return false;
        m_settings.HidPath = QFileInfo(path).absolutePath();
        if (!m_document->SaveProfile(path, false))
            return false;
        m_document->SetSaved(true);
        return true;
    }
    const QString filter = DialogText(u"Filter_kcf"_s, u"Keymap Configuration Files (*.kcf)"_s) + "|*.kcf"_L1;
    const EditorDialogs::ChosenFile chosen =
        m_dialogs.SaveFileName(this, DialogText(u"Caption_SaveKcf"_s, u"Save Keymap as..."_s),
                               QDir(m_settings.KcfPath).filePath(proposed), filter);
    const QString path = SaveDialogPath(chosen, filter);
    if (path.isEmpty())
        return false;
    m_settings.KcfPath = QFileInfo(path).absolutePath();
    if (FileError cause; !WriteKeymapText(m_document->CurrentKeymap(), path, &cause)) {
        ShowWriteFailed(cause);
        return false;
    }
    m_document->SetCurrentFile(path);
    m_document->SetSaved(true);
    return true;
}

void MainWindow::ImportPicture()
{
    const QString filter = DialogText(u"Filter_Pics"_s, u"Picture Files (*.bmp,*.jpg,*.jpeg,*.gif)"_s)
                           + "|*.bmp;*.jpg;*.jpeg;*.gif;*.png"_L1;
    const QString path = m_dialogs.OpenFileName(this, DialogText(u"Caption_LoadPicture"_s, u"Load Picture"_s),
                                                m_settings.PicPath, filter);
    if (path.isEmpty())
        return;
    m_settings.PicPath = QFileInfo(path).absolutePath();
    if (!m_document->AdoptPicture(path))
        return;
    m_document->SetSaved(false);
    if (m_document->IsKeymapDocument())
        m_document->SetCurrentFile(QString());
    UpdateCaption();
}

void MainWindow::ImportKeymap()
{
    const QString filter = DialogText(u"Filter_kcf"_s, u"Keymap Configuration Files (*.kcf)"_s) + "|*.kcf"_L1;
    const QString path = m_dialogs.OpenFileName(this, DialogText(u"Caption_LoadKeymap"_s, u"Load Keymap"_s),
                                                m_settings.KcfPath, filter);
    if (path.isEmpty())
        return;
    m_settings.KcfPath = QFileInfo(path).absolutePath();
    if (m_document->ReadKeymap(path, false))
        m_document->SetSaved(false);
}

void MainWindow::ExportPicture()
{
    const ProfilePicture &picture = m_document->Picture();
    if (picture.PictureTempPath.isEmpty())
        return;
    const QString extension = LowerExtension(picture.PictureName);
    const QString name = (m_document->CurrentFile().isEmpty() ? DialogText(u"File_Unnamed"_s, u"Unnamed"_s)
                                                              : ProfileBaseName(m_document->CurrentFile()))
                         + u'.' + extension;
    const QString filter = DialogText(u"Filter_File"_s, u"File"_s) + " (*."_L1 + extension + ")|*."_L1 + extension;
    const EditorDialogs::ChosenFile chosen =
        m_dialogs.SaveFileName(this, DialogText(u"Caption_SavePicture"_s, u"Save Picture as..."_s),
                               QDir(m_settings.PicPath).filePath(name), filter);
    const QString path = SaveDialogPath(chosen, filter);
    if (path.isEmpty())
        return;
    m_settings.PicPath = QFileInfo(path).absolutePath();
    if (FileError cause; !CopyWholeFile(picture.PictureTempPath, path, &cause))
        ShowWriteFailed(cause);
}

void MainWindow::ExportKeymap()
{
    const QString filter = DialogText(u"Filter_kcf"_s, u"Keymap Configuration Files (*.kcf)"_s) + "|*.kcf"_L1;
    const EditorDialogs::ChosenFile chosen =
        m_dialogs.SaveFileName(this, DialogText(u"Caption_SaveKcf"_s, u"Save Keymap as..."_s),
                               QDir(m_settings.KcfPath).filePath(m_document->DisplayName() + ".kcf"_L1), filter);
    const QString path = SaveDialogPath(chosen, filter);
    if (path.isEmpty())
        return;
    m_settings.KcfPath = QFileInfo(path).absolutePath();
    if (FileError cause; !WriteKeymapText(m_document->CurrentKeymap(), path, &cause))
        ShowWriteFailed(cause);
}

void MainWindow::ViewKeymap()
{
    if (!m_keymapView)
        m_keymapView = new KeymapView(*m_document, this);
    m_keymapView->Refresh();
    m_keymapView->show();
    m_keymapView->raise();
    m_keymapView->activateWindow();
}

void MainWindow::About()
{
    AboutDialog dialog(this);
    dialog.exec();
}

void MainWindow::OpenReadme()
{
    const QString path = ReadmePath();
    if (!path.isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void MainWindow::DropFile(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    if (extension == "hid"_L1 || extension == "tar"_L1) {
        m_document->OpenProfile(AbsoluteFilePath(path));
    } else if (extension == "kcf"_L1) {
        m_document->ReadKeymap(path, false);
    } else if (IsProfilePictureName(path)) {
        // Unlike Import, a dropped picture leaves the saved flag alone.
        if (m_document->AdoptPicture(path) && m_document->IsKeymapDocument()) {
            m_document->SetCurrentFile(QString());
            UpdateCaption();
        }
    }
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls() && !IsCountingDown())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile())
        return;
    event->acceptProposedAction();
    DropFile(urls.first().toLocalFile());
}

void MainWindow::OpenSettings()
{
    if (m_dialogs.ConfigurePort(this))
        TakeStoredSettings();
}

void MainWindow::TakeStoredSettings()
{
    const Settings stored = m_store.Read();
    m_settings.Port = stored.Port;
    m_settings.Speed = stored.Speed;
    if (stored.Language != m_settings.Language) {
        // A new language shows at once.
        m_settings.Language = stored.Language;
        SetLanguage(m_settings.Language);
        ApplyMainWindowLanguage();
    }
}

void MainWindow::SendProfile()
{
    UploadRequest request;
    request.Port = m_settings.Port;
    request.Speed = m_settings.Speed;
    request.RemoteName = RemoteProfileName(m_document->CurrentFile());
    // Called by the upload window on this thread, before its worker starts.
    const auto writeProfileCopy = [this] {
        FileError error;
        QString path = MakeTempFile(error);
        if (path.isEmpty()) {
            ShowWriteFailed(error);
            return QString();
        }
        if (!m_document->SaveProfile(path, true)) {
            RemoveFile(path);
            return QString();
        }
        return path;
    };
    UploadWindow window(std::move(request), writeProfileCopy, m_dialogs, this);
    window.exec();
    // A termination signal ended the upload as Abort does; now the program ends.
    if (window.EndedBySignal() != 0) {
        m_endingSignal = window.EndedBySignal();
        QCoreApplication::exit();
    }
}

void MainWindow::WriteBackSettings()
{
    m_settings.Left = x();
    m_settings.Top = y();
    m_store.WriteOnExit(m_settings);
    (void)m_store.Sync();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_countdown.isActive() || !CheckSaved()) {
        event->ignore();
        return;
    }
    if (m_keymapView)
        m_keymapView->close();
    DeleteTempFiles();
    WriteBackSettings();
    event->accept();
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ApplyMainWindowLanguage();
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    RefreshKeyDisplay(-1);
}
