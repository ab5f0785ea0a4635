// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow.h"

#include "aboutdialog.h"
#include "actioneditor.h"
#include "editmenu.h"
#include "editordialogs.h"
#include "editortexts.h"
#include "heldkeys.h"
#include "keymap/keyboardcapture.h"
#include "keymap/keymaptexts.h"
#include "keymap/keymapwriter.h"
#include "keymap/keytable.h"
#include "keymapview.h"
#include "overviewcommands.h"
#include "phone/profileupload.h"
#include "phonekeypad.h"
#include "profile/document.h"
#include "profile/picture.h"
#include "profile/tempfiles.h"
#include "readmeview.h"
#include "recentfilesmenu.h"
#include "settings/qtlanguage.h"
#include "settings/readme.h"
#include "settingswindow.h"
#include "shortcutsinhibitor.h"
#include "support/nativefile.h"
#include "support/programpaths.h"
#include "templatechooser.h"
#include "transport/uploadjobs.h"
#include "uploadwindow.h"
#include "windowfit.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QThreadPool>
#include <QUrl>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

constexpr PhoneKey FirstFocusedKey = PhoneKeys::Digit1;

// The program's own windows. When one of them hands the activation back, the
// main window puts the focus on key "1" as when it first opened; message boxes
// and file dialogs belong to the command that showed them and leave the focus
// where it was, and so does coming back from another program.
bool IsProgramWindow(QWidget *window)
{
    return qobject_cast<AboutDialog *>(window) || qobject_cast<KeymapView *>(window)
           || qobject_cast<SettingsWindow *>(window) || qobject_cast<UploadWindow *>(window);
}

} // namespace

MainWindow::MainWindow(EditorDialogs &dialogs, SettingsStore &store, QWidget *parent)
    : QMainWindow(parent), m_dialogs(dialogs), m_store(store), m_fileNames(dialogs, m_settings, this)
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
    m_shortcuts = new ShortcutsInhibitor(this);

    m_saveButton = new QPushButton(this);
    m_sendButton = new QPushButton(this);
    m_loadPictureButton = new QPushButton(this);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_loadPictureButton);
    buttons->addStretch(1);
    buttons->addWidget(m_sendButton);
    buttons->addWidget(m_saveButton);
    setTabOrder(m_loadPictureButton, m_sendButton);
    setTabOrder(m_sendButton, m_saveButton);

    // The editor column keeps its width; the phone takes the rest of the window.
    auto *right = new QVBoxLayout;
    right->addWidget(m_editor);
    right->addStretch(1);
    right->addLayout(buttons);

    auto *central = new QWidget(this);
    auto *layout = new QHBoxLayout(central);
    layout->addWidget(m_keypad, 1);
    layout->addLayout(right);
    setCentralWidget(central);

    connect(m_document, &Document::MessageRaised, this, &MainWindow::ShowMessage);
    connect(m_recentMenu, &RecentFilesMenu::MessageRaised, this, &MainWindow::ShowMessage);
    connect(m_recentMenu, &RecentFilesMenu::FileChosen, this, [this](const QString &path) {
        if (CheckSaved())
            OpenFile(path);
    });
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
    connect(m_keypad, &PhoneKeypad::KeyButtonPressed, this, &MainWindow::RefreshKeyDisplay);
    connect(m_keypad, &PhoneKeypad::KeyButtonFocusLost, this, [this] { RefreshKeyDisplay(-1); });

    connect(m_editor, &ActionEditor::ActionEdited, this, &MainWindow::ActionEdited);

    connect(m_saveButton, &QPushButton::clicked, this, [this] { (void)Save(); });
    connect(m_sendButton, &QPushButton::clicked, this, &MainWindow::SendProfile);
    connect(m_loadPictureButton, &QPushButton::clicked, this, &MainWindow::ImportPicture);

    m_focusWindowWatch = connect(qApp, &QGuiApplication::focusWindowChanged, this, &MainWindow::FocusWindowChanged);

    ConnectSnapshot();

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
    m_recentMenu = new RecentFilesMenu(*m_document, m_store, this);
    m_fileMenu->addMenu(m_recentMenu);
    m_newFromTemplateAction = m_fileMenu->addAction(QString(), this, &MainWindow::NewFromTemplate);
    m_saveAction = m_fileMenu->addAction(QString(), this, [this] { (void)Save(); });
    m_saveAction->setShortcut(QKeySequence::Save);
    m_saveAsAction = m_fileMenu->addAction(QString(), this, [this] { (void)SaveAs(); });
    // Some platforms (plain X11 among them) bind nothing to Save As.
    const QList<QKeySequence> saveAsKeys = QKeySequence::keyBindings(QKeySequence::SaveAs);
    m_saveAsAction->setShortcuts(saveAsKeys.isEmpty() ? QList<QKeySequence>{QKeySequence(u"Ctrl+Shift+S"_s)}
                                                      : saveAsKeys);
    m_fileMenu->addSeparator();
    m_importMenu = m_fileMenu->addMenu(QString());
    m_importPictureAction = m_importMenu->addAction(QString(), this, &MainWindow::ImportPicture);
    m_importKeymapAction = m_importMenu->addAction(QString(), this, &MainWindow::ImportKeymap);
    m_exportMenu = m_fileMenu->addMenu(QString());
    m_exportPictureAction = m_exportMenu->addAction(QString(), this, &MainWindow::ExportPicture);
    m_exportKeymapAction = m_exportMenu->addAction(QString(), this, &MainWindow::ExportKeymap);
    m_exportOverviewAction = m_exportMenu->addAction(QString(), this, [this] {
        ExportOverview(*m_document, m_fileNames, m_dialogs, this);
    });
    m_printAction = m_fileMenu->addAction(QString(), this, [this] { PrintOverview(*m_document, m_dialogs, this); });
    m_printAction->setShortcut(QKeySequence::Print);
    m_fileMenu->addSeparator();
    m_uploadAction = m_fileMenu->addAction(QString(), this, &MainWindow::SendProfile);
    m_viewKeymapAction = m_fileMenu->addAction(QString(), this, &MainWindow::ViewKeymap);
    m_settingsAction = m_fileMenu->addAction(QString(), this, &MainWindow::OpenSettings);
    m_settingsAction->setMenuRole(QAction::PreferencesRole);
    m_fileMenu->addSeparator();
    m_exitAction = m_fileMenu->addAction(QString(), this, &QWidget::close);
    m_exitAction->setShortcut(QKeySequence::Quit);
    m_exitAction->setMenuRole(QAction::QuitRole);

    m_editMenu = new EditMenu(*m_document, this);
    menuBar()->addMenu(m_editMenu);
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
    if (!BluetoothAvailable())
        m_settings.Connection = PhoneConnection::Serial;
    SetLanguage(m_settings.Language);
    ApplyQtLanguage();
    ApplyMainWindowLanguage();
    resize(OpeningSize(*this));
    if (m_settings.Left > 0)
        move(m_settings.Left, y());
    if (m_settings.Top > 0)
        move(x(), m_settings.Top);
    show();

    if (!m_settings.HasConnection() && m_dialogs.ConfigurePort(this))
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
    bool opened = false;
    if (!path.isEmpty()) {
        // The window is drawn before the file is read.
        QCoreApplication::processEvents();
        opened = m_document->OpenAtStart(path);
    }
    if (opened)
        m_document->DropReadAhead();
    else
        m_document->OpenTemplate(FindProgramFile(u"Desktop.hid"_s));
    RefreshKeyDisplay(FirstFocusedKey);
    m_keypad->CMD(FirstFocusedKey)->setFocus();
}

void MainWindow::ApplyMainWindowLanguage()
{
    // Longer words in the editor widen the window, not shrink the phone.
    const int keypadWidth = m_keypad->width();
    m_fileMenu->setTitle(LanguageText(EditorText::MenuFile));
    m_openAction->setText(LanguageText(EditorText::MenuOpen));
    m_newFromTemplateAction->setText(LanguageText(EditorText::MenuNewFromTemplate));
    m_saveAction->setText(LanguageText(EditorText::MenuSave));
    m_saveAsAction->setText(LanguageText(EditorText::MenuSaveAs));
    m_importMenu->setTitle(LanguageText(EditorText::MenuImport));
    m_importPictureAction->setText(LanguageText(EditorText::MenuPicture));
    m_importKeymapAction->setText(LanguageText(EditorText::MenuKeymap));
    m_exportMenu->setTitle(LanguageText(EditorText::MenuExport));
    m_exportPictureAction->setText(LanguageText(EditorText::MenuPicture));
    m_exportKeymapAction->setText(LanguageText(EditorText::MenuKeymap));
    m_exportOverviewAction->setText(LanguageText(EditorText::MenuOverview));
    m_printAction->setText(LanguageText(EditorText::MenuPrint));
    m_uploadAction->setText(LanguageText(EditorText::MenuFileUpload));
    m_viewKeymapAction->setText(LanguageText(EditorText::MenuViewKeymap));
    m_settingsAction->setText(LanguageText(EditorText::MenuSettings));
    m_exitAction->setText(LanguageText(EditorText::MenuExit));
    m_helpMenu->setTitle(LanguageText(EditorText::MenuHelp));
    m_readmeAction->setText(LanguageText(EditorText::MenuReadme));
    m_aboutAction->setText(LanguageText(EditorText::MenuAbout));
    m_editMenu->ApplyLanguage();
    m_recentMenu->ApplyLanguage();
    m_popUpLoadAction->setText(LanguageText(EditorText::MenuPopUpLoad));
    m_popUpSaveAction->setText(LanguageText(EditorText::MenuPopUpSave));
    m_keypad->CMD(PhoneKeys::Lsk)->setText(LanguageText(PhoneKeyNames[PhoneKeys::Lsk].Name));
    m_keypad->CMD(PhoneKeys::Rsk)->setText(LanguageText(PhoneKeyNames[PhoneKeys::Rsk].Name));
    m_loadPictureButton->setText(LanguageText(EditorText::ButtonLoadPicture));
    m_sendButton->setText(WithoutAccessKey(LanguageText(EditorText::MenuFileUpload)));
    m_texts = KeyActionTexts::Load();
    ApplyKeyNameLanguage();
    m_editor->ApplyLanguage();
    UpdateCaption();
    UpdateToolTip(-1);
    RefreshKeyDisplay(-1);
    KeepWidthForTexts(
        *m_saveButton, {LanguageText(EditorText::ButtonSaveProfile), LanguageText(EditorText::ButtonSaveKeymap)},
        [this](const QString &text) { m_saveButton->setText(text); }, m_saveButton->text());
    QStringList titles;
    for (int key = 0; key < PhoneKeys::Count; ++key)
        titles << KeyFrameTitle(key);
    m_editor->KeepWidthForTitles(titles);
    GrowToKeepWidth(*this, *m_keypad, keypadWidth);
}

void MainWindow::UpdateCaption()
{
    setWindowTitle(m_document->Caption());
    const bool profile = !m_document->IsKeymapDocument();
    m_saveButton->setText(profile ? LanguageText(EditorText::ButtonSaveProfile)
                                  : LanguageText(EditorText::ButtonSaveKeymap));
    m_sendButton->setEnabled(profile && m_uploadAction->isEnabled());
    m_popUpSaveAction->setEnabled(!m_document->Picture().PictureTempPath.isEmpty());
    m_exportPictureAction->setEnabled(m_popUpSaveAction->isEnabled());
}

bool MainWindow::CheckSaved()
{
    if (m_document->IsSaved())
        return true;
    QString text = LanguageText(EditorText::SaveChanges);
    text.replace("%f"_L1, m_document->NameWithExtension());
    const QString title = LanguageText(EditorText::NoteTitle);
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

QString MainWindow::KeyFrameTitle(int index) const
{
    return m_texts.FrameText + " \""_L1 + PhoneKeyDisplayName(index) + u'"';
}

void MainWindow::RefreshKeyDisplay(int index)
{
    if (index >= 0 && index < PhoneKeys::Count)
        m_activeButton = index;
    m_keypad->SetActiveButton(m_activeButton);
    m_editor->setTitle(KeyFrameTitle(m_activeButton));
    m_editor->ShowAction(m_document->Action(m_activeButton));
}

void MainWindow::UpdateToolTip(int scope)
{
    const int first = scope == -1 ? 0 : m_activeButton;
    const int last = scope == -1 ? PhoneKeys::Count - 1 : m_activeButton;
    for (int key = first; key <= last; ++key) {
        const QString tip = KeyActionToolTip(m_document->Action(key), m_texts);
        m_keypad->CMD(key)->setToolTip(tip);
        // Screen readers announce the action with the key's name.
        m_keypad->CMD(key)->setAccessibleDescription(tip.trimmed());
    }
}

void MainWindow::ActionEdited(const KeyAction &action)
{
    // A new device is stored after the tool tip is rebuilt: the tip keeps the
    // previous device's text until the key's next edit or refresh.
    const bool deviceSwitched = action.IsMouse != m_document->Action(m_activeButton).IsMouse;
    if (deviceSwitched)
        UpdateToolTip(0);
    m_document->SetAction(m_activeButton, action);
    if (!deviceSwitched)
        UpdateToolTip(0);
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
    if (const QString path = m_fileNames.FileToOpen(); !path.isEmpty())
        OpenFile(path);
}

void MainWindow::NewFromTemplate()
{
    TemplateChooser chooser(this);
    if (chooser.exec() == QDialog::Accepted && !chooser.ChosenPath().isEmpty() && CheckSaved())
        m_document->OpenTemplate(FindProgramFile(u"Desktop.hid"_s), chooser.ChosenPath());
}

void MainWindow::OpenFile(const QString &path)
{
    if (m_document->Open(path))
        m_fileNames.Opened(path);
}

bool MainWindow::Save()
{
    if (m_document->CurrentFile().isEmpty())
        return SaveAs();
    return m_document->Save();
}

bool MainWindow::SaveAs()
{
    const QString name = m_document->NameWithExtension();
    const QString path = m_document->IsKeymapDocument() ? m_fileNames.KeymapToSave(name)
                                                        : m_fileNames.ProfileToSave(name);
    return !path.isEmpty() && m_document->SaveAs(path);
}

void MainWindow::ImportPicture()
{
    if (const QString path = m_fileNames.PictureToImport(); !path.isEmpty())
        m_document->ImportPicture(path);
}

void MainWindow::ImportKeymap()
{
    if (const QString path = m_fileNames.KeymapToImport(); !path.isEmpty())
        m_document->ImportKeymap(path);
}

void MainWindow::ExportPicture()
{
    const ProfilePicture &picture = m_document->Picture();
    if (picture.PictureTempPath.isEmpty())
        return;
    const QString path = m_fileNames.PictureToExport(m_document->DisplayName(), LowerExtension(picture.PictureName));
    if (!path.isEmpty())
        (void)m_document->ExportPicture(path);
}

void MainWindow::ExportKeymap()
{
    if (const QString path = m_fileNames.KeymapToSave(m_document->DisplayName() + ".kcf"_L1); !path.isEmpty())
        (void)m_document->ExportKeymap(path);
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
    ShowReadme(ReadmePath(), this);
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls() && !m_countdown.IsCounting())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile())
        return;
    event->acceptProposedAction();
    const QString path = LocalFileFromUrl(urls.first());
    const FileKind kind = FileKindOf(path);
    if ((kind != FileKind::Profile && kind != FileKind::Keymap) || CheckSaved())
        m_document->Drop(path);
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
    m_settings.Connection = BluetoothAvailable() ? stored.Connection : PhoneConnection::Serial;
    m_settings.Phone = stored.Phone;
    if (stored.Language != m_settings.Language) {
        // A new language shows at once.
        m_settings.Language = stored.Language;
        SetLanguage(m_settings.Language);
        ApplyQtLanguage();
        ApplyMainWindowLanguage();
    }
}

void MainWindow::SendProfile()
{
    UploadRequest request;
    request.Connection = m_settings.Connection;
    request.Phone = m_settings.Phone;
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
    if (m_countdown.IsCounting() || !CheckSaved()) {
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
