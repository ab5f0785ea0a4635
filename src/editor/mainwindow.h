// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "filenamedialogs.h"
#include "keymap/keyactiontext.h"
#include "settings/settingsstore.h"
#include "snapshotcountdown.h"
#include "support/nativefile.h"

#include <QMainWindow>

#include <future>
#include <memory>

class ActionEditor;
class Document;
class KeymapView;
class EditMenu;
class EditorDialogs;
class HeldKeys;
class PhoneKeypad;
class ShortcutsInhibitor;
class QAction;
class QMenu;
class QPushButton;
class QWindow;
class RecentFilesMenu;
struct DocumentMessage;

// The editor window: the phone with its 22 key buttons, the editor of the
// selected key's action, the file commands. A thin view over the Document.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // The window uses the dialogs and the settings store given (tests pass
    // their own); it owns neither.
    MainWindow(EditorDialogs &dialogs, SettingsStore &store, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Runs the start-up sequence: settings, language, position, showing the
    // window, the port settings when no port is configured, then the file
    // named in the arguments (a profile or a keymap) or the default profile as
    // an unnamed template.
    void Startup(const QStringList &arguments);

    Document &Doc() const { return *m_document; }
    PhoneKeypad *Keypad() const { return m_keypad; }
    EditMenu *Edit() const { return m_editMenu; }
    ActionEditor *Editor() const { return m_editor; }
    QPushButton *SaveButton() const { return m_saveButton; }
    QPushButton *SendButton() const { return m_sendButton; }
    QPushButton *LoadPictureButton() const { return m_loadPictureButton; }
    HeldKeys &Keys() const { return *m_heldKeys; }
    const Settings &CurrentSettings() const { return m_settings; }
    int ActiveButton() const { return m_activeButton; }

    void ApplyMainWindowLanguage();
    void UpdateCaption();
    // Asks whether to save unsaved changes; false when the user cancelled.
    bool CheckSaved();
    // Selects a key (-1 keeps the selection) and fills the editor from it.
    void RefreshKeyDisplay(int index);
    // Rebuilds the tool tip of the selected key (scope 0) or of all (-1).
    void UpdateToolTip(int scope);

    // File commands.
    void Open();
    // A ready-made keymap chosen in the template chooser, on the default
    // picture, as an unnamed profile.
    void NewFromTemplate();
    // Opens a profile or a keymap as Open does, without asking.
    void OpenFile(const QString &path);
    bool Save();
    bool SaveAs();
    void ImportPicture();
    void ImportKeymap();
    void ExportPicture();
    void ExportKeymap();
    void ViewKeymap();
    KeymapView *KeymapWindow() const { return m_keymapView; }
    void About();
    void OpenReadme();
    void OpenSettings();
    // Sends the profile to the phone in the modal upload window. When a
    // termination signal ended the upload, the application's event loop ends
    // and EndingSignal() names the signal.
    void SendProfile();
    int EndingSignal() const { return m_endingSignal; }

    // Keyboard capture: the countdown on the Snapshot button, then the chord.
    void StartSnapshot();

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void BuildMenus();
    void ShowMessage(const DocumentMessage &message);
    void ShowWriteFailed(const FileError &cause);
    void ConnectSnapshot();
    void CaptureKeyboard(int index);
    // The countdown is over or taken back: the window as before it.
    void EndSnapshot();
    // The editor's title for a key: the frame text and the key's name in quotes.
    QString KeyFrameTitle(int index) const;
    void FocusWindowChanged(QWindow *window);
    void WriteBackSettings();
    // The port, speed and language the settings window stored.
    void TakeStoredSettings();

    // Stores an edit from the action editor in the selected key.
    void ActionEdited(const KeyAction &action);

    EditorDialogs &m_dialogs;
    SettingsStore &m_store;
    std::future<void> m_fontsSetUp; // the font database, set up on a pool thread
    Settings m_settings;
    FileNameDialogs m_fileNames;
    Document *m_document = nullptr;
    PhoneKeypad *m_keypad = nullptr;
    ActionEditor *m_editor = nullptr;
    HeldKeys *m_heldKeys = nullptr;
    ShortcutsInhibitor *m_shortcuts = nullptr; // the compositor's, during a snapshot
    QPushButton *m_saveButton = nullptr;
    QPushButton *m_sendButton = nullptr;
    QPushButton *m_loadPictureButton = nullptr;
    QMenu *m_fileMenu = nullptr;
    QMenu *m_helpMenu = nullptr;
    EditMenu *m_editMenu = nullptr;
    RecentFilesMenu *m_recentMenu = nullptr;
    QAction *m_openAction = nullptr;
    QAction *m_newFromTemplateAction = nullptr;
    QAction *m_saveAction = nullptr;
    QAction *m_saveAsAction = nullptr;
    QMenu *m_importMenu = nullptr;
    QAction *m_importPictureAction = nullptr;
    QAction *m_importKeymapAction = nullptr;
    QMenu *m_exportMenu = nullptr;
    QAction *m_exportPictureAction = nullptr;
    QAction *m_exportKeymapAction = nullptr;
    QAction *m_exportOverviewAction = nullptr;
    QAction *m_printAction = nullptr;
    QAction *m_uploadAction = nullptr;
    QAction *m_viewKeymapAction = nullptr;
    QAction *m_settingsAction = nullptr;
    QAction *m_exitAction = nullptr;
    QAction *m_readmeAction = nullptr;
    QAction *m_aboutAction = nullptr;
    QMenu *m_pictureMenu = nullptr;
    QAction *m_popUpLoadAction = nullptr;
    QAction *m_popUpSaveAction = nullptr;
    KeymapView *m_keymapView = nullptr;
    KeyActionTexts m_texts;
    int m_activeButton = 0;
    SnapshotCountdown m_countdown;
    bool m_closing = false;
    // Whether the main window's next activation puts the focus on key "1": at
    // first, and when one of the program's own windows was active last.
    bool m_activationFocusesFirstKey = true;
    QMetaObject::Connection m_focusWindowWatch;
    int m_endingSignal = 0;
};
