// SPDX-License-Identifier: GPL-3.0-or-later
// Uploads 50 KB and 300 KB profiles through a pseudo-terminal to the fake
// phone, unthrottled and with the phone pacing the line, and reports the Put
// phase (from the first packet to the last answer) against the stop-and-wait
// limit: 1018 payload bytes per 1027 bytes on the wire (a full request and its
// 3-byte answer), at 10 bits a byte.
//
//   bench_upload [RUNS]     (default 3; the median is reported)
#include "fakephone.h"
#include "phone/profileupload.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr double PayloadPerPacket = 1018;
constexpr double WirePerPacket = 1027;
constexpr double BitsPerByte = 10;

// Seconds of the Put phase, or a negative number when the upload failed.
double PutSeconds(qint64 lineBps, qsizetype size)
{
    FakePhone::Options options;
    options.LineBps = lineBps;
    FakePhone phone(options);
    if (!phone.Start())
        return -1;
    QTemporaryDir dir;
    const QString copyPath = dir.filePath(u"PMXB.tmp"_s);
    QByteArray data(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        data[i] = char(i * 31 % 251);

    UploadRequest request;
    request.Port = *SerialPort::Parse(phone.PortName());
    request.Speed = 115200;
    request.RemoteName = u"Bench.hid"_s;
    request.OpenPauseMs = 0;
    QFile file(copyPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != size)
        return -1;
    file.close();
    request.ProfilePath = copyPath;
    request.OwnsProfile = true;
    ProfileUpload upload(request);
    QElapsedTimer timer;
    double seconds = -1;
    int statuses = 0;
    QObject::connect(&upload, &ProfileUpload::StatusChanged, [&](const QString &) {
        // The fourth status opens the Put phase, the fifth closes it.
        if (++statuses == 4)
            timer.start();
        else if (statuses == 5)
            seconds = double(timer.nsecsElapsed()) / 1e9;
    });
    if (upload.Run() != UploadResult::Succeeded || phone.Seen().Files.value(request.RemoteName) != data)
        return -1;
    return seconds;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 3;
    std::printf("%-12s %8s %10s %10s %10s %8s\n", "line", "size", "put s", "KB/s", "limit s", "of limit");
    for (const qint64 bps : {qint64(0), qint64(115200), qint64(921600)}) {
        for (const qsizetype size : {qsizetype(50000), qsizetype(300000)}) {
            std::vector<double> times;
            for (int run = 0; run < runs; ++run)
                times.push_back(PutSeconds(bps, size));
            std::sort(times.begin(), times.end());
            const double median = times[times.size() / 2];
            if (times.front() < 0) {
                std::printf("%-12s %8lld  upload failed\n", bps ? qPrintable(QString::number(bps)) : "unthrottled",
                            static_cast<long long>(size));
                continue;
            }
            const double kbPerSecond = double(size) / 1024 / median;
            if (bps == 0) {
                std::printf("%-12s %8lld %10.3f %10.0f %10s %8s\n", "unthrottled", static_cast<long long>(size),
                            median, kbPerSecond, "-", "-");
                continue;
            }
            const double limit = double(size) / PayloadPerPacket * WirePerPacket * BitsPerByte / double(bps);
            std::printf("%-12lld %8lld %10.3f %10.1f %10.3f %7.1f%%\n", static_cast<long long>(bps),
                        static_cast<long long>(size), median, kbPerSecond, limit, 100 * limit / median);
        }
    }
    return 0;
}
