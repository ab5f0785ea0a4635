// SPDX-License-Identifier: GPL-3.0-or-later
// Start-up to the first painted window: the editor on the bundled default
// profile against a bare Qt Widgets window, both started the same way (a new
// process each time, same platform plugin), in the same run. Reports the
// median time from starting the process to the window's first paint, and the
// peak memory of each, with the ratios.
//
//   build-rel/bin/bench_startup [runs]
// Uses the offscreen platform unless a display is set.
#include "editor/editordialogs.h"
#include "editor/mainwindow.h"
#include "profile/document.h"
#include "profile/tempfiles.h"
#include "settings/settingsstore.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QProcess>
#include <QTemporaryDir>
#include <QWidget>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

long PeakMemoryKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Reports the first paint of a window and ends the program. For the editor
// only a paint that shows the profile counts: the document must hold the
// default profile's picture by then.
class FirstPaint : public QObject
{
public:
    std::function<bool()> Ready = [] { return true; };

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && watched->isWidgetType() && static_cast<QWidget *>(watched)->isWindow()
            && Ready()) {
            QMetaObject::invokeMethod(
                qApp,
                [] {
                    std::printf("painted %ld\n", PeakMemoryKb());
                    std::fflush(stdout);
                    QCoreApplication::exit(0);
                },
                Qt::QueuedConnection);
            qApp->removeEventFilter(this);
        }
        return false;
    }
};

int RunChild(int argc, char *argv[], bool editor, const QString &settingsPath)
{
    QApplication app(argc, argv);
    FirstPaint watcher;
    app.installEventFilter(&watcher);
    if (!editor) {
        // The least a Widgets program shows: a window with a line of text.
        QLabel window(u"Padmapper"_s);
        window.resize(760, 560);
        window.show();
        return QApplication::exec();
    }
    DeleteStaleTempFiles(); // as the editor's main() does
    StandardEditorDialogs dialogs;
    SettingsStore store(settingsPath);
    MainWindow window(dialogs, store);
    watcher.Ready = [&window] { return !window.Doc().Picture().Image.isNull(); };
    window.Startup({});
    const int status = QApplication::exec();
    DeleteTempFiles();
    return status;
}

struct Sample
{
    double Ms = 0;
    long MemoryKb = 0;
};

Sample Launch(const QString &program, const QStringList &arguments)
{
    QElapsedTimer timer;
    QProcess process;
    timer.start();
    process.start(program, arguments);
    Sample sample;
    while (process.waitForReadyRead(30000)) {
        const QByteArray line = process.readLine();
        if (line.startsWith("painted ")) {
            sample.Ms = static_cast<double>(timer.nsecsElapsed()) / 1e6;
            sample.MemoryKb = line.mid(8).trimmed().toLong();
            break;
        }
    }
    process.waitForFinished(30000);
    return sample;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc >= 2 && (std::string_view(argv[1]) == "--bare" || std::string_view(argv[1]) == "--editor"))
        return RunChild(argc, argv, std::string_view(argv[1]) == "--editor",
                        argc >= 3 ? QString::fromLocal8Bit(argv[2]) : QString());

    QCoreApplication app(argc, argv);
    const int runs = argc >= 2 ? std::max(1, atoi(argv[1])) : 9;
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir dir;
    const QString settings = dir.filePath(u"settings.ini"_s);
    {
        SettingsStore store(settings);
        store.WritePort(*SerialPort::Parse(u"/dev/rfcomm0"_s), 115200);
        (void)store.Sync();
    }
    const QString self = QCoreApplication::applicationFilePath();
    std::vector<double> bareMs, editorMs, bareKb, editorKb;
    for (int i = 0; i < runs; ++i) {
        // Alternate, so that a busy moment hits both alike.
        const Sample bare = Launch(self, {u"--bare"_s});
        const Sample editor = Launch(self, {u"--editor"_s, settings});
        bareMs.push_back(bare.Ms);
        editorMs.push_back(editor.Ms);
        bareKb.push_back(double(bare.MemoryKb));
        editorKb.push_back(double(editor.MemoryKb));
    }
    const double bt = Median(bareMs), et = Median(editorMs), bm = Median(bareKb), em = Median(editorKb);
    std::printf("platform %s, %d runs each, medians\n",
                qgetenv("QT_QPA_PLATFORM").isEmpty() ? "native" : qgetenv("QT_QPA_PLATFORM").constData(), runs);
    std::printf("  bare Qt window (a label) %8.1f ms  %8.0f KB peak\n", bt, bm);
    std::printf("  Padmapper editor         %8.1f ms  %8.0f KB peak\n", et, em);
    std::printf("  ratio                    %8.2f x   %8.2f x   (target: at most 1.5 x)\n", et / bt, em / bm);
    return 0;
}
