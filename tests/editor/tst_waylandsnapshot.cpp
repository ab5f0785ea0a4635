// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/actioneditor.h"
#include "editor/shortcutsinhibitor.h"
#include "mainwindowharness.h"
#include "profile/document.h"

#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_WaylandSnapshot : public QObject, MainWindowHarness
{
    Q_OBJECT

private slots:
    void cleanup() { Close(); }

    // Under Wayland the compositor acts on the chords it binds; while Snapshot
    // counts it passes them to the window, or, where it refuses, the editor
    // says that the boxes must complete the chord. Run by run-under-sway,
    // whose sway binds Super+X to touching the file PADMAPPER_BOUND_MARKER
    // names.
    void snapshotTakesCompositorChords()
    {
        const QString bound = qEnvironmentVariable("PADMAPPER_BOUND_MARKER");
        QVERIFY2(QGuiApplication::platformName().startsWith("wayland"_L1) && !bound.isEmpty(),
                 "run by tests/editor/run-under-sway only");
        QProcess wtype;
        const auto superX = [&wtype](const QStringList &keys) {
            wtype.start(u"wtype"_s, QStringList{u"-M"_s, u"logo"_s} + keys + QStringList{u"-m"_s, u"logo"_s});
        };
        MainWindow &window = Start();
        superX({u"-k"_s, u"x"_s});
        QTRY_VERIFY(QFile::exists(bound));
        QTRY_COMPARE(wtype.state(), QProcess::NotRunning);
        QVERIFY(QFile::remove(bound));

        auto *inhibitor = window.findChild<ShortcutsInhibitor *>();
        const int key = window.ActiveButton();
        window.Editor()->SnapshotButton()->click();
        // A compositor that refuses may say so or never answer at all.
        const bool refuses = qEnvironmentVariableIsSet("PADMAPPER_SWAY_REFUSES");
        QTRY_COMPARE(inhibitor->CurrentState(),
                     refuses ? ShortcutsInhibitor::State::Asked : ShortcutsInhibitor::State::Active);
        // wtype's keyboard joins the seat first, which the compositor tells the
        // window as a focus change; X goes down half a second later and stays
        // down past the snapshot, three seconds after the click.
        superX({u"-s"_s, u"500"_s, u"-P"_s, u"x"_s, u"-s"_s, u"3500"_s, u"-p"_s, u"x"_s});
        QTRY_COMPARE_WITH_TIMEOUT(window.Editor()->SnapshotButton()->text(), u"Snapshot"_s, 5000);
        QTRY_COMPARE_WITH_TIMEOUT(wtype.state(), QProcess::NotRunning, 5000);
        QCOMPARE(wtype.exitCode(), 0);
        QCOMPARE(inhibitor->CurrentState(), ShortcutsInhibitor::State::Off);
        QCOMPARE(QFile::exists(bound), refuses);
        QCOMPARE(window.Editor()->MessageLabel()->text().startsWith(u"The desktop may have kept"_s), refuses);
        if (refuses)
            return;
        const KeyAction &action = window.Doc().Action(key);
        QCOMPARE(std::pair(int(action.Modifiers), int(action.KeyCode)), std::pair(8, 88)); // Win(left)+X
    }
};

QTEST_MAIN(tst_WaylandSnapshot)
#include "tst_waylandsnapshot.moc"
