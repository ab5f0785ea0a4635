// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/mainwindow.h"
#include "editor/phonekeypad.h"
#include "keymap/keymapwriter.h"
#include "profile/tempfiles.h"
#include "scripteddialogs.h"
#include "settings/settingsstore.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

// The main window over scripted dialogs, with its settings file in a folder of
// its own. Test classes derive from it next to QObject; a test sets up
// m_dialogs before Start when start-up itself is to meet them.
class MainWindowHarness
{
public:
    ~MainWindowHarness() { Close(); }

protected:
    QTemporaryDir m_dir;
    std::unique_ptr<ScriptedDialogs> m_dialogs = std::make_unique<ScriptedDialogs>();
    std::unique_ptr<SettingsStore> m_store;
    std::unique_ptr<MainWindow> m_window;

    QString Path(const QString &name) const { return m_dir.filePath(name); }
    // A folder of the test's own, made when missing.
    QString Folder(const QString &name) const { return QDir().mkpath(Path(name)) ? Path(name) : QString(); }
    QString ToolTip(int key) const { return m_window->Keypad()->CMD(key)->toolTip(); }

    // The phone's defaults, and Alt+Tab on key "3".
    static Keymap SampleKeymap()
    {
        Keymap keymap;
        keymap.ResetToPhoneDefaults();
        keymap[PhoneKeys::Digit(3)] = KeyAction{false, 0, 4, 9, QStringLiteral("Alt+Tab")};
        return keymap;
    }
    // The keymap file; its path, or "" when it could not be written.
    static QString MakeKeymap(const QString &path) { return WriteKeymapText(SampleKeymap(), path) ? path : QString(); }

    // An edit of one key's comment, as the action editor hands it over.
    void EditComment(PhoneKey key, const QString &comment)
    {
        KeyAction action = m_window->Doc().Action(key);
        action.Comment = comment;
        m_window->Doc().SetAction(key, action);
    }

    // Starts the window; an empty port leaves the settings without one.
    MainWindow &Start(const QStringList &arguments = {}, const QString &portName = QStringLiteral("/dev/rfcomm0"))
    {
        m_store = std::make_unique<SettingsStore>(Path(QStringLiteral("settings.ini")));
        if (!portName.isEmpty()) {
            m_store->WritePort(*SerialPort::Parse(portName), 115200);
            (void)m_store->Sync();
        }
        m_window = std::make_unique<MainWindow>(*m_dialogs, *m_store);
        m_window->Startup(arguments);
        // Let activation and the first key's focus settle, as they do before a
        // user's first click.
        (void)QTest::qWaitForWindowActive(m_window.get(), 2000);
        QCoreApplication::processEvents();
        return *m_window;
    }

    // Runs act on the next modal window once it has the keyboard, as a user
    // would; act closes it.
    static void OnNextModal(const std::function<void(QWidget *)> &act)
    {
        auto *poll = new QTimer(qApp);
        QObject::connect(poll, &QTimer::timeout, poll, [poll, act] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal || !modal->isActiveWindow())
                return;
            poll->deleteLater();
            poll->stop();
            act(modal);
        });
        poll->start(10);
    }

    // Closes the window without questions and forgets the settings and answers.
    void Close()
    {
        m_window.reset();
        DeleteTempFiles();
        QFile::remove(Path(QStringLiteral("settings.ini")));
        m_dialogs = std::make_unique<ScriptedDialogs>();
    }
};
