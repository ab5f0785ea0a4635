// SPDX-License-Identifier: GPL-3.0-or-later
// Packs, lists and reads profiles with pictures from 10 KB to 20 MB, and lists
// a 10,000-entry archive, side by side with GNU tar doing the same in the same
// run. Our side is timed in-process and, for listing, also as a process
// (padmapper-cli list), since GNU tar's times include starting a process.
//
//   build-rel/bin/bench_profile [path/to/padmapper-cli]
#include "profile/tar.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int Repeats = 5;

double BestMs(const auto &work)
{
    double best = 1e18;
    for (int i = 0; i < Repeats; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return best;
}

bool Run(const QString &program, const QStringList &arguments, const QString &folder)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(-1) && process.exitCode() == 0;
}

void WriteRandom(const QString &path, qint64 size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return;
    QByteArray piece(1 << 16, Qt::Uninitialized);
    QRandomGenerator random(size);
    for (qint64 left = size; left > 0; left -= piece.size()) {
        random.fillRange(reinterpret_cast<quint32 *>(piece.data()), piece.size() / 4);
        file.write(piece.constData(), std::min<qint64>(left, piece.size()));
    }
}

void Row(const char *what, double ours, double gnu)
{
    std::printf("  %-34s %9.2f ms %9.2f ms   x%.2f\n", what, ours, gnu, gnu / ours);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QString gnuTar = QStandardPaths::findExecutable(u"tar"_s);
    const QString cli = argc > 1 ? QString::fromLocal8Bit(argv[1])
                                 : QCoreApplication::applicationDirPath() + u"/padmapper-cli"_s;
    if (gnuTar.isEmpty()) {
        std::fprintf(stderr, "GNU tar not found\n");
        return 1;
    }
    QTemporaryDir dir;
    const QString folder = dir.path();
    QFile keymap(dir.filePath(u"Games.kcf"_s));
    if (!keymap.open(QIODevice::WriteOnly))
        return 1;
    const QString keymapText = QString(3000, u'k');
    keymap.write(keymapText.toLatin1());
    keymap.close();

    std::printf("best of %d; ratio = GNU tar time / our time (above 1: we are faster)\n", Repeats);
    std::printf("  %-34s %12s %12s\n", "", "Padmapper", "GNU tar");
    for (const qint64 size : {10'000LL, 100'000LL, 1'000'000LL, 20'000'000LL}) {
        const QString picture = dir.filePath(u"Games.jpg"_s);
        WriteRandom(picture, size);
        const QString ours = dir.filePath(u"ours.hid"_s);
        const QString theirs = dir.filePath(u"theirs.tar"_s);
        std::printf("picture of %lld bytes:\n", size);

        const double packOurs = BestMs([&] {
            cTar tar;
            tar.AddFile(picture, u"Games.jpg"_s, QString());
            tar.AddFile(QString(), u"Games.kcf"_s, keymapText);
            (void)tar.CreateTarFile(ours);
        });
        const double packGnu = BestMs([&] {
            Run(gnuTar, {u"-cf"_s, theirs, u"Games.jpg"_s, u"Games.kcf"_s}, folder);
        });
        Row("pack (in-process / tar -cf)", packOurs, packGnu);

        const double listOurs = BestMs([&] {
            cTar tar;
            (void)tar.GetContents(ours);
        });
        const double listGnu = BestMs([&] { Run(gnuTar, {u"-tvf"_s, theirs}, folder); });
        Row("list (in-process / tar -tvf)", listOurs, listGnu);
        const double listCli = BestMs([&] { Run(cli, {u"list"_s, ours}, folder); });
        Row("list (padmapper-cli / tar -tvf)", listCli, listGnu);

        const double readOurs = BestMs([&] {
            cTar tar;
            (void)tar.GetContents(ours);
            (void)tar.FileToArray(1).size();
        });
        const double readGnu = BestMs([&] { Run(gnuTar, {u"-xOf"_s, theirs, u"Games.jpg"_s}, folder); });
        Row("read the picture (in-process / tar -xOf)", readOurs, readGnu);
    }

    // 10,000 small entries, written by GNU tar, listed by both.
    const QString many = dir.filePath(u"many"_s);
    QDir().mkpath(many);
    for (int i = 0; i < 10000; ++i) {
        QFile file(many + u"/e%1"_s.arg(i));
        if (file.open(QIODevice::WriteOnly))
            file.write("x");
    }
    const QString manyTar = dir.filePath(u"many.tar"_s);
    Run(gnuTar, {u"-cf"_s, manyTar, u"many"_s}, folder);
    std::printf("archive of 10,001 entries (by GNU tar):\n");
    int listed = 0;
    const double manyOurs = BestMs([&] {
        cTar tar;
        (void)tar.GetContents(manyTar);
        listed = tar.TotalFiles();
    });
    const double manyGnu = BestMs([&] { Run(gnuTar, {u"-tvf"_s, manyTar}, folder); });
    Row("list (in-process / tar -tvf)", manyOurs, manyGnu);
    const double manyCli = BestMs([&] { Run(cli, {u"list"_s, manyTar}, folder); });
    Row("list (padmapper-cli / tar -tvf)", manyCli, manyGnu);
    std::printf("  (%d entries listed)\n", listed);
    return 0;
}
