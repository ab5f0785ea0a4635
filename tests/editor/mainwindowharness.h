// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/mainwindow.h"
#include "profile/tempfiles.h"
#include "scripteddialogs.h"
#include "settings/settingsstore.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

// The main window over scripted dialogs, with its settings file in a folder of
// its own. Test classes derive from it next to QObject.
class MainWindowHarness
{
public:
    ~MainWindowHarness() { Close(); }

protected:
    QTemporaryDir m_dir;
    std::unique_ptr<ScriptedDialogs> m_dialogs;
    std::unique_ptr<SettingsStore> m_store;
    std::unique_ptr<MainWindow> m_window;

    QString Path(const QString &name) const { return m_dir.filePath(name); }
    // An edit of one key's comment, as the action editor hands it over.
    void EditComment(PhoneKey key, const QString &comment)
    {
        KeyAction action = m_window->Doc().Action(key);
        action.Comment = comment;
        m_window->Doc().SetAction(key, action);
    }

    // The window before Startup; an empty port leaves the settings without one.
    MainWindow &Create(const QString &portName)
    {
        m_dialogs = std::make_unique<ScriptedDialogs>();
        m_store = std::make_unique<SettingsStore>(Path(QStringLiteral("settings.ini")));
        if (!portName.isEmpty()) {
            m_store->WritePort(*SerialPort::Parse(portName), 115200);
            (void)m_store->Sync();
        }
        m_window = std::make_unique<MainWindow>(*m_dialogs, *m_store);
        return *m_window;
    }

    MainWindow &Start(const QStringList &arguments = {}, const QString &portName = QStringLiteral("/dev/rfcomm0"))
    {
        Create(portName).Startup(arguments);
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

    // Closes the window without questions and forgets the settings.
    void Close()
    {
        m_window.reset();
        DeleteTempFiles();
        QFile::remove(Path(QStringLiteral("settings.ini")));
    }
};
