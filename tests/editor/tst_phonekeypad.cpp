// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/movementarrow.h"
#include "editor/phonekeybutton.h"
#include "editor/phonekeypad.h"

#include "keymap/keymap.h"
#include "profile/picture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

PhoneKeyButton *Key(const PhoneKeypad &keypad, int index)
{
    return qobject_cast<PhoneKeyButton *>(keypad.CMD(index));
}

QRect Geometry(const PhoneKeypad &keypad, int index)
{
    return keypad.CMD(index)->geometry();
}

QPixmap Render(QWidget &widget, qreal ratio)
{
    QPixmap pixmap(widget.size() * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    widget.render(&pixmap, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
    return pixmap;
}

// A picture in one colour that the phone's art never uses.
QImage PlainPicture(QSize size)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(QColor(255, 0, 255));
    return picture;
}

// The bounds of the picture's pixels in a rendering of the screen.
QRect PictureBounds(const QImage &rendering)
{
    QRect bounds;
    for (int y = 0; y < rendering.height(); ++y)
        for (int x = 0; x < rendering.width(); ++x) {
            const QColor pixel = rendering.pixelColor(x, y);
            if (pixel.red() > 200 && pixel.blue() > 200 && pixel.green() < 80)
                bounds |= QRect(x, y, 1, 1);
        }
    return bounds;
}

// The largest difference of any colour channel between two renderings.
int LargestDifference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return 256;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
        }
    return largest;
}

} // namespace

class tst_PhoneKeypad : public QObject {
    Q_OBJECT

private slots:
    // Every key is inside the phone, apart from the others, and where a phone has it.
    void keysLieInsideApartAndInPlace_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("size hint") << PhoneKeypad().sizeHint();
        QTest::newRow("minimum") << PhoneKeypad().minimumSizeHint();
        QTest::newRow("wide") << QSize(700, 400);
        QTest::newRow("tall and narrow") << QSize(180, 900);
        QTest::newRow("large") << QSize(600, 1200);
    }
    void keysLieInsideApartAndInPlace()
    {
        QFETCH(QSize, size);
        PhoneKeypad keypad;
        keypad.resize(size);
        keypad.show();
        auto at = [&keypad](int index) { return Geometry(keypad, index); };
        for (int i = 0; i < PhoneKeys::Count; ++i) {
            QVERIFY2(keypad.CMD(i), qPrintable(QString::number(i)));
            QVERIFY(keypad.CMD(i)->isVisible());
            QVERIFY(!at(i).isEmpty());
            QVERIFY2(keypad.rect().contains(at(i)), qPrintable(QString::number(i)));
            QVERIFY(!at(i).intersects(keypad.ScreenArea()->geometry()));
            for (int j = i + 1; j < PhoneKeys::Count; ++j)
                QVERIFY2(!at(i).intersects(at(j)), qPrintable(u"%1 and %2"_s.arg(i).arg(j)));
        }
        QCOMPARE(keypad.CMD(-1), nullptr);
        QCOMPARE(keypad.CMD(PhoneKeys::Count), nullptr);

        using namespace PhoneKeys;

        const QRect screen = keypad.ScreenArea()->geometry();
        QVERIFY(screen.bottom() < at(Lsk).top());
        QVERIFY(at(Lsk).right() < at(Rsk).left());
        QVERIFY(at(Lsk).bottom() < at(Digit(1)).top());
        QVERIFY(at(Rsk).bottom() < at(Digit(3)).top());
        QVERIFY(at(Lsk).right() < at(Joy).left() && at(Joy).right() < at(Rsk).left());

        const QPoint press = at(Joy).center();
        QVERIFY(at(Left).right() < at(Joy).left() && qAbs(at(Left).center().y() - press.y()) <= 1);
        QVERIFY(at(Right).left() > at(Joy).right() && qAbs(at(Right).center().y() - press.y()) <= 1);
        QVERIFY(at(Up).bottom() < at(Joy).top() && qAbs(at(Up).center().x() - press.x()) <= 1);
        QVERIFY(at(Down).top() > at(Joy).bottom() && qAbs(at(Down).center().x() - press.x()) <= 1);

        const int rows[4][3] = { { Digit(1), Digit(2), Digit(3) }, { Digit(4), Digit(5), Digit(6) },
            { Digit(7), Digit(8), Digit(9) }, { Star, Digit(0), Hash } };
        for (int row = 0; row < 4; ++row) {
            for (int column = 1; column < 3; ++column) {
                QCOMPARE(at(rows[row][column]).top(), at(rows[row][0]).top());
                QVERIFY(at(rows[row][column - 1]).right() < at(rows[row][column]).left());
            }
            if (row > 0)
                QVERIFY(at(rows[row - 1][0]).bottom() < at(rows[row][0]).top());
        }
        QVERIFY(at(Down).bottom() < at(Digit(2)).top());

        // The side keys stand out of the right edge: right of everything on the front.
        for (int side : { VolUp, VolDown, Cam }) {
            QVERIFY(at(side).left() > at(Rsk).right());
            QVERIFY(at(side).left() > at(Hash).right());
            QVERIFY(at(side).left() > screen.right());
        }
        QVERIFY(at(VolUp).bottom() < at(VolDown).top());
        QVERIFY(at(VolDown).bottom() < at(Cam).top());
        QVERIFY(at(VolUp).top() < screen.bottom());
        QVERIFY(at(Cam).top() > at(Rsk).bottom());
    }

    // The body and the caps are kept drawn. After a change of palette, size or
    // scale the keypad looks like one made that way from the start.
    void keptDrawingsFollowChanges_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<qreal>("ratio");
        QTest::newRow("dark palette") << true << QSize(260, 520) << 1.0;
        QTest::newRow("other size") << false << QSize(300, 560) << 1.0;
        QTest::newRow("ratio 1.5") << false << QSize(260, 520) << 1.5;
        QTest::newRow("ratio 2, dark, other size") << true << QSize(231, 501) << 2.0;
    }
    void keptDrawingsFollowChanges()
    {
        QFETCH(bool, dark);
        QFETCH(QSize, size);
        QFETCH(qreal, ratio);
        const QPalette darkPalette(QColor(52, 55, 60), QColor(40, 42, 46));
        PhoneKeypad changed;
        changed.resize(260, 520);
        Key(changed, PhoneKeys::Digit(5))->SetActive(true);
        (void)Render(changed, 1.0);
        if (dark)
            changed.setPalette(darkPalette);
        changed.resize(size);
        PhoneKeypad fresh;
        if (dark)
            fresh.setPalette(darkPalette);
        fresh.resize(size);
        Key(fresh, PhoneKeys::Digit(5))->SetActive(true);
        const int difference
            = LargestDifference(Render(changed, ratio).toImage(), Render(fresh, ratio).toImage());
        QVERIFY2(difference <= 2, qPrintable(QString::number(difference)));
    }

    void captions()
    {
        PhoneKeypad keypad;
        QCOMPARE(keypad.CMD(PhoneKeys::Lsk)->text(), u"&Left"_s);
        QCOMPARE(keypad.CMD(PhoneKeys::Rsk)->text(), u"&Right"_s);
        const QString digits = u"123456789*0#"_s;
        for (int i = 0; i < digits.size(); ++i)
            QCOMPARE(keypad.CMD(PhoneKeys::Digit1 + i)->text(), QString(digits.at(i)));
        for (int i = PhoneKeys::Joy; i <= PhoneKeys::Cam; ++i) {
            QVERIFY(keypad.CMD(i)->text().isEmpty());
            QVERIFY(!keypad.CMD(i)->accessibleName().isEmpty());
        }
    }

    void setActiveButtonDrawsOneDown_data()
    {
        QTest::addColumn<int>("active");
        QTest::addColumn<int>("drawnDown"); // -1: none
        QTest::newRow("left soft key") << 0 << 0;
        QTest::newRow("joystick up") << 4 << 4;
        QTest::newRow("camera") << 9 << 9;
        QTest::newRow("hash") << 21 << 21;
        QTest::newRow("none") << -1 << -1;
        QTest::newRow("out of range") << 22 << -1;
    }
    void setActiveButtonDrawsOneDown()
    {
        QFETCH(int, active);
        QFETCH(int, drawnDown);
        PhoneKeypad keypad;
        keypad.SetActiveButton(7);
        keypad.SetActiveButton(active);
        QCOMPARE(keypad.ActiveButton(), drawnDown);
        for (int i = 0; i < PhoneKeys::Count; ++i)
            QCOMPARE(Key(keypad, i)->IsDrawnDown(), i == drawnDown);
    }

    void signalsOnFocusAndRelease_data()
    {
        QTest::addColumn<int>("index");
        for (int index : { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 19, 20, 21 })
            QTest::addRow("key %d", index) << index;
    }
    void signalsOnFocusAndRelease()
    {
        QFETCH(int, index);
        PhoneKeypad keypad;
        keypad.resize(keypad.sizeHint());
        keypad.show();
        keypad.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&keypad));
        keypad.SetActiveButton(PhoneKeys::Digit(8));
        // Activation gave some key the focus already.
        if (QApplication::focusWidget())
            QApplication::focusWidget()->clearFocus();
        QSignalSpy focused(&keypad, &PhoneKeypad::KeyButtonFocused);
        QSignalSpy released(&keypad, &PhoneKeypad::KeyButtonReleased);
        QSignalSpy lost(&keypad, &PhoneKeypad::KeyButtonFocusLost);
        const int other = index == PhoneKeys::Hash ? PhoneKeys::Digit0 : PhoneKeys::Hash;

        keypad.CMD(other)->setFocus(Qt::TabFocusReason);
        QCOMPARE(focused.count(), 1);
        QCOMPARE(focused.at(0).at(0).toInt(), other);

        QSignalSpy clicked(keypad.CMD(index), &QAbstractButton::clicked);
        QTest::mouseClick(keypad.CMD(index), Qt::LeftButton);
        QCOMPARE(lost.count(), 1);
        QCOMPARE(lost.at(0).at(0).toInt(), other);
        QCOMPARE(focused.count(), 2);
        QCOMPARE(focused.at(1).at(0).toInt(), index);
        QCOMPARE(released.count(), 1);
        QCOMPARE(released.at(0).at(0).toInt(), index);
        QCOMPARE(clicked.count(), 1);
        // The selection is the window's business: a click alone does not move it.
        QVERIFY(Key(keypad, PhoneKeys::Digit(8))->IsDrawnDown());
        QVERIFY(!Key(keypad, index)->IsDrawnDown());
    }

    void focusLostOnlyWithinTheWindow()
    {
        auto *keypad = new PhoneKeypad;
        keypad->resize(keypad->sizeHint());
        keypad->show();
        keypad->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(keypad));
        keypad->CMD(PhoneKeys::Digit(2))->setFocus(Qt::TabFocusReason);
        int lost = 0;
        connect(keypad, &PhoneKeypad::KeyButtonFocusLost, this, [&lost] { ++lost; });

        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QCOMPARE(lost, 0);
        keypad->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(keypad));
        keypad->CMD(PhoneKeys::Digit(3))->setFocus(Qt::TabFocusReason);
        QCOMPARE(lost, 1);

        // Closing the window does not signal from a half-destroyed keypad.
        delete keypad;
        QCOMPARE(lost, 1);
    }

    void disabledKeysIgnoreTheMouse()
    {
        PhoneKeypad keypad;
        keypad.resize(keypad.sizeHint());
        keypad.show();
        QSignalSpy released(&keypad, &PhoneKeypad::KeyButtonReleased);
        keypad.SetKeyButtonsEnabled(false);
        for (int i = 0; i < PhoneKeys::Count; ++i)
            QVERIFY(!keypad.CMD(i)->isEnabled());
        QTest::mouseClick(keypad.CMD(PhoneKeys::Digit(5)), Qt::LeftButton);
        QCOMPARE(released.count(), 0);
        keypad.SetKeyButtonsEnabled(true);
        QTest::mouseClick(keypad.CMD(PhoneKeys::Digit(5)), Qt::LeftButton);
        QCOMPARE(released.count(), 1);
    }

    void tabVisitsEveryKeyOnce()
    {
        PhoneKeypad keypad;
        keypad.resize(keypad.sizeHint());
        keypad.show();
        keypad.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&keypad));
        keypad.CMD(PhoneKeys::Lsk)->setFocus(Qt::TabFocusReason);
        QSet<int> seen;
        for (int step = 0; step < PhoneKeys::Count; ++step) {
            auto *key = qobject_cast<PhoneKeyButton *>(QApplication::focusWidget());
            QVERIFY(key);
            seen.insert(key->Index());
            QTest::keyClick(key, Qt::Key_Tab);
        }
        QCOMPARE(seen.size(), PhoneKeys::Count);
        QCOMPARE(QApplication::focusWidget(), keypad.CMD(PhoneKeys::Lsk));

        QSignalSpy clicked(keypad.CMD(PhoneKeys::Lsk), &QAbstractButton::clicked);
        QTest::keyClick(keypad.CMD(PhoneKeys::Lsk), Qt::Key_Space);
        QCOMPARE(clicked.count(), 1);
    }

    // Where a picture goes is FitRect's own test; the screen draws it there, in
    // finer pixels at 2x, and nothing once it is gone.
    void pictureIsDrawnWhereItFits_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::newRow("wider than the screen") << QSize(1000, 300);
        QTest::newRow("taller than the screen") << QSize(300, 1000);
        QTest::newRow("small stays small") << QSize(40, 30);
    }
    void pictureIsDrawnWhereItFits()
    {
        QFETCH(QSize, picture);
        PhoneKeypad keypad;
        keypad.resize(keypad.sizeHint());
        keypad.SetPicture(PlainPicture(picture));
        QWidget *screen = keypad.ScreenArea();
        int width = picture.width();
        int height = picture.height();
        const QRect shown = PictureBounds(screen->grab().toImage());
        QCOMPARE(shown, FitRect(screen->width(), screen->height(), width, height, true));
        QCOMPARE(PictureBounds(Render(*screen, 2).toImage()), QRect(shown.topLeft() * 2, shown.size() * 2));
        keypad.SetPicture(QImage());
        QVERIFY(PictureBounds(screen->grab().toImage()).isEmpty());
    }

    void movementArrowIcons_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("drawn");
        QTest::newRow("click left draws nothing") << 0 << false;
        QTest::newRow("click right draws nothing") << 1 << false;
        for (int action = MouseActions::MoveLeft; action <= MouseActions::MoveDownLeft; ++action)
            QTest::addRow("movement %d", action) << action << true;
        QTest::newRow("out of range") << 10 << false;
    }
    void movementArrowIcons()
    {
        QFETCH(int, action);
        QFETCH(bool, drawn);
        const QIcon icon = MovementArrowIcon(action, QApplication::palette());
        const QPointF expected[]
            = { { -1, 0 }, { -1, -1 }, { 0, -1 }, { 1, -1 }, { 1, 0 }, { 1, 1 }, { 0, 1 }, { -1, 1 } };
        for (qreal ratio : { 1.0, 2.0 }) {
            const QPixmap pixmap = icon.pixmap(QSize(32, 32), ratio);
            QCOMPARE(pixmap.size(), QSize(32, 32) * ratio);
            QCOMPARE(pixmap.devicePixelRatio(), ratio);
            // Each direction points its own way: the ink is heaviest towards the arrow's tip.
            const QImage image = pixmap.toImage();
            QPointF weight;
            qreal total = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x) {
                    const qreal alpha = qAlpha(image.pixel(x, y));
                    weight += QPointF(x + 0.5, y + 0.5) / ratio * alpha;
                    total += alpha;
                }
            QCOMPARE(total > 0, drawn);
            if (!drawn)
                continue;
            const QPointF direction = weight / total - QPointF(16, 16);
            const QPointF want = expected[action - MouseActions::MoveLeft];
            QVERIFY2(QPointF::dotProduct(direction, want) > 0.5,
                qPrintable(u"%1,%2"_s.arg(direction.x()).arg(direction.y())));
            if (want.x() == 0)
                QVERIFY(qAbs(direction.x()) < 0.2);
            if (want.y() == 0)
                QVERIFY(qAbs(direction.y()) < 0.2);
        }
    }
};

QTEST_MAIN(tst_PhoneKeypad)
#include "tst_phonekeypad.moc"
