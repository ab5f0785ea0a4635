// SPDX-License-Identifier: GPL-3.0-or-later
// Makes the bundled default profile: a picture drawn here (a desktop screen
// with windows and the mouse pointer, the size of the phones' screens) and the
// Desktop keymap, packed as the editor saves profiles.
//
//   makedefaultprofile KEYMAP.kcf OUT.hid
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "profile/profilearchive.h"
#include "profile/tempfiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int ScreenWidth = 176;
constexpr int ScreenHeight = 220;

void Window(QPainter &p, const QRectF &r, const QColor &title)
{
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 0, 0, 60));
    p.drawRoundedRect(r.translated(2, 3), 4, 4);
    p.setBrush(QColor(245, 247, 250));
    p.drawRoundedRect(r, 4, 4);
    QPainterPath bar;
    bar.addRoundedRect(QRectF(r.left(), r.top(), r.width(), 14), 4, 4);
    bar.addRect(QRectF(r.left(), r.top() + 8, r.width(), 6));
    p.setBrush(title);
    p.drawPath(bar.simplified());
    p.setBrush(QColor(255, 255, 255, 200));
    for (int i = 0; i < 3; ++i)
        p.drawEllipse(QPointF(r.right() - 8 - i * 9, r.top() + 7), 2.6, 2.6);
    p.setBrush(QColor(200, 206, 216));
    for (int line = 0; line < 4; ++line) {
        const double width = (r.width() - 20) * (line % 2 ? 0.6 : 0.85);
        p.drawRoundedRect(QRectF(r.left() + 10, r.top() + 22 + line * 9, width, 4), 2, 2);
    }
}

QImage DesktopPicture()
{
    QImage image(ScreenWidth, ScreenHeight, QImage::Format_RGB32);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, ScreenHeight);
    sky.setColorAt(0, QColor(28, 76, 140));
    sky.setColorAt(1, QColor(10, 28, 60));
    p.fillRect(image.rect(), sky);
    // Soft hills on the wallpaper.
    QPainterPath hill;
    hill.moveTo(0, 150);
    hill.cubicTo(60, 120, 110, 175, 176, 140);
    hill.lineTo(176, 220);
    hill.lineTo(0, 220);
    p.fillPath(hill, QColor(40, 110, 170, 120));

    Window(p, QRectF(14, 24, 118, 74), QColor(52, 120, 220));
    Window(p, QRectF(46, 84, 116, 70), QColor(230, 120, 40));

    // Task bar with a start button and three open windows.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(12, 18, 30, 230));
    p.drawRect(QRectF(0, ScreenHeight - 22, ScreenWidth, 22));
    p.setBrush(QColor(90, 200, 120));
    p.drawRoundedRect(QRectF(4, ScreenHeight - 18, 22, 14), 4, 4);
    p.setBrush(QColor(120, 140, 170));
    for (int i = 0; i < 3; ++i)
        p.drawRoundedRect(QRectF(32 + i * 26, ScreenHeight - 17, 22, 12), 3, 3);

    // The mouse pointer over the front window.
    QPainterPath arrow;
    arrow.moveTo(0, 0);
    arrow.lineTo(0, 26);
    arrow.lineTo(6.5, 20);
    arrow.lineTo(11, 30);
    arrow.lineTo(15, 28);
    arrow.lineTo(10.5, 18.5);
    arrow.lineTo(19, 18.5);
    arrow.closeSubpath();
    p.translate(112, 118);
    p.setBrush(QColor(0, 0, 0, 90));
    p.drawPath(arrow.translated(2, 2));
    p.setPen(QPen(Qt::black, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::white);
    p.drawPath(arrow);
    return image;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: makedefaultprofile KEYMAP.kcf OUT.hid\n");
        return 2;
    }
    Keymap keymap;
    if (ReadKeymapText(keymap, args[1], false)) {
        std::fprintf(stderr, "makedefaultprofile: %s has errors\n", qPrintable(args[1]));
        return 1;
    }
    const QString picturePath = QDir::temp().filePath(u"Desktop-%1.png"_s.arg(QCoreApplication::applicationPid()));
    if (!DesktopPicture().save(picturePath, "PNG")) {
        std::fprintf(stderr, "makedefaultprofile: cannot write %s\n", qPrintable(picturePath));
        return 1;
    }
    ProfilePicture picture;
    const bool adopted = AdoptPicture(picturePath, picture);
    QFile::remove(picturePath);
    QString out = args[2];
    const bool saved = adopted && SaveProfile(out, false, keymap, picture);
    DeleteTempFiles();
    if (!saved) {
        std::fprintf(stderr, "makedefaultprofile: cannot write %s\n", qPrintable(out));
        return 1;
    }
    return 0;
}
