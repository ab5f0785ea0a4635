// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/movementarrow.h"
#include "editor/phonekeybutton.h"
#include "editor/phonekeypad.h"

#include "keymap/keymap.h"
#include "profile/picture.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

PhoneKeyButton *Key(const PhoneKeypad &keypad, int index)
{
    return qobject_cast<PhoneKeyButton *>(keypad.CMD(index));
}

QImage Render(QWidget &widget, qreal ratio)
{
    QPixmap pixmap(widget.size() * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    widget.render(&pixmap, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
    return pixmap.toImage();
}

// The bounds of the picture's pixels (magenta, which the phone's art never uses)
// in a rendering of the screen.
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

} // namespace

class tst_PhoneKeypad : public QObject
{
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
    }
    void keysLieInsideApartAndInPlace()
    {
        QFETCH(QSize, size);
        PhoneKeypad keypad;
        keypad.resize(size);
        keypad.show();
        using namespace PhoneKeys;
        const int screen = -1;
        auto at = [&keypad](int index) {
            return index < 0 ? keypad.ScreenArea()->geometry() : keypad.CMD(index)->geometry();
        };
        for (int i = screen; i < Count; ++i) {
            QVERIFY(i < 0 || keypad.CMD(i)->isVisible());
            QVERIFY2(!at(i).isEmpty() && keypad.rect().contains(at(i)), qPrintable(QString::number(i)));
            for (int j = i + 1; j < Count; ++j)
                QVERIFY2(!at(i).intersects(at(j)), qPrintable(u"%1 and %2"_s.arg(i).arg(j)));
        }
        QCOMPARE(keypad.CMD(-1), nullptr);
        QCOMPARE(keypad.CMD(Count), nullptr);

        // Where a phone has its keys: a before b from left to right (x) or top to
        // bottom (y); or level with it (centres at most a pixel apart).
        const std::tuple<int, char, int> order[] = {
            {screen, 'y', Lsk},  {Lsk, 'x', Joy},   {Joy, 'x', Rsk},      {Lsk, 'y', Digit(1)}, {Rsk, 'y', Digit(3)},
            {Left, 'x', Joy},    {Joy, 'x', Right}, {Up, 'y', Joy},       {Joy, 'y', Down},     {Down, 'y', Digit(2)},
            {Left, '-', Joy},    {Right, '-', Joy}, {Up, '|', Joy},       {Down, '|', Joy},     {VolUp, 'y', VolDown},
            {VolDown, 'y', Cam}, {Rsk, 'y', Cam},   {screen, 'x', VolUp}, {Rsk, 'x', Cam},      {Hash, 'x', Cam}};
        for (const auto &[a, relation, b] : order) {
            const bool holds = relation == 'x'   ? at(a).right() < at(b).left()
                               : relation == 'y' ? at(a).bottom() < at(b).top()
                               : relation == '-' ? qAbs(at(a).center().y() - at(b).center().y()) <= 1
                                                 : qAbs(at(a).center().x() - at(b).center().x()) <= 1;
            QVERIFY2(holds, qPrintable(u"%1 %2 %3"_s.arg(a).arg(QChar::fromLatin1(relation)).arg(b)));
        }
        QVERIFY(at(VolUp).top() < at(screen).bottom()); // the volume keys beside the screen
        // The digits in rows of three: 1 2 3, 4 5 6, 7 8 9, * 0 #.
        for (int key = Digit1 + 1; key <= Hash; ++key) {
            if ((key - Digit1) % 3 != 0)
                QVERIFY(at(key - 1).right() < at(key).left() && at(key - 1).top() == at(key).top());
            if (key - Digit1 >= 3)
                QVERIFY(at(key - 3).bottom() < at(key).top());
        }
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
        QTest::newRow("ratio 2, dark, other size") << true << QSize(231, 501) << 2.0;
    }
    void keptDrawingsFollowChanges()
    {
        QFETCH(bool, dark);
        QFETCH(QSize, size);
        QFETCH(qreal, ratio);
        PhoneKeypad changed, fresh;
        changed.resize(260, 520);
        Key(changed, PhoneKeys::Digit(5))->SetActive(true);
        (void)Render(changed, 1.0);
        for (PhoneKeypad *keypad : {&changed, &fresh}) {
            if (dark)
                keypad->setPalette(QPalette(QColor(52, 55, 60), QColor(40, 42, 46)));
            keypad->resize(size);
        }
        Key(fresh, PhoneKeys::Digit(5))->SetActive(true);
        const QImage a = Render(changed, ratio), b = Render(fresh, ratio);
        QCOMPARE(a.size(), b.size());
        int difference = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                for (const int shift : {0, 8, 16, 24})
                    difference = std::max(difference, std::abs(int((a.pixel(x, y) >> shift) & 0xff)
                                                               - int((b.pixel(x, y) >> shift) & 0xff)));
        QVERIFY2(difference <= 2, qPrintable(QString::number(difference)));
    }

    // The keys as buttons: words on the soft and digit keys (symbols and a name
    // for screen readers on the others), a click where
    // each is drawn, none while disabled. Focus lost to another window, or as
    // the keypad goes, is no loss within it.
    void keysAreButtons()
    {
        using namespace PhoneKeys;
        auto *keypad = new PhoneKeypad;
        keypad->resize(keypad->sizeHint());
        keypad->show();
        keypad->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(keypad));
        for (int i = 0; i < Count; ++i) {
            const PhoneKeyName &name = PhoneKeyNames.at(std::size_t(i));
            QCOMPARE(keypad->CMD(i)->text(), name.ShowsSymbol ? QString() : name.Name.English.toString());
            QCOMPARE(keypad->CMD(i)->accessibleName(), name.ShowsSymbol ? name.Name.English.toString() : QString());
        }
        keypad->SetActiveButton(Digit(7));
        keypad->SetActiveButton(Digit(8));
        QSignalSpy focused(keypad, &PhoneKeypad::KeyButtonFocused);
        QSignalSpy released(keypad, &PhoneKeypad::KeyButtonReleased);
        QSignalSpy lost(keypad, &PhoneKeypad::KeyButtonFocusLost);
        const auto take = [](QSignalSpy &spy) {
            QList<int> indices;
            for (const QList<QVariant> &signal : std::as_const(spy))
                indices << signal.at(0).toInt();
            spy.clear();
            return indices;
        };
        // A corner of the joystick's rectangle, outside its round cap, takes no click.
        QSignalSpy corner(keypad->CMD(Joy), &QAbstractButton::clicked);
        QTest::mouseClick(keypad->CMD(Joy), Qt::LeftButton, {}, QPoint(1, 1));
        QCOMPARE(corner.count(), 0);
        keypad->SetKeyButtonsEnabled(false);
        for (int i = 0; i < Count; ++i)
            QVERIFY(!keypad->CMD(i)->isEnabled());
        keypad->SetKeyButtonsEnabled(true);
        focused.clear(); // disabling moved the focus along, the corner click sent a release
        released.clear();

        keypad->CMD(Lsk)->setFocus(Qt::TabFocusReason);
        focused.clear();
        lost.clear();
        // From the last key to the first, each click takes the focus from the one before.
        for (int i = Count - 1; i >= 0; --i) {
            QSignalSpy clicked(keypad->CMD(i), &QAbstractButton::clicked);
            QTest::mouseClick(keypad->CMD(i), Qt::LeftButton);
            QCOMPARE(take(focused) + take(lost) + take(released), (QList<int>{i, i == Count - 1 ? Lsk : i + 1, i}));
            QCOMPARE(clicked.count(), 1);
        }
        // The selection is the window's business: a click alone does not move it.
        for (int i = 0; i < Count; ++i)
            QCOMPARE(Key(*keypad, i)->IsDrawnDown(), i == Digit(8));
        keypad->SetActiveButton(Count); // none
        QVERIFY(keypad->ActiveButton() == -1 && !Key(*keypad, Digit(8))->IsDrawnDown());

        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        keypad->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(keypad));
        delete keypad;
        QCOMPARE(lost.count(), 0);
    }

    // Arrows move to the nearest key that way, the joystick is entered at its
    // middle; Space and Enter press the key; the key last focused is the
    // keypad's one tab stop.
    void arrowsMoveAndKeysPress_data()
    {
        using namespace PhoneKeys;
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("to");
        QTest::newRow("6 down to 9") << Digit(6) << int(Qt::Key_Down) << Digit(9);
        QTest::newRow("left soft key right to the joystick") << Lsk << int(Qt::Key_Right) << Joy;
        QTest::newRow("right soft key left to the joystick") << Rsk << int(Qt::Key_Left) << Joy;
        QTest::newRow("2 up to the joystick, not its arm") << Digit(2) << int(Qt::Key_Up) << Joy;
        QTest::newRow("joystick left to its arm") << Joy << int(Qt::Key_Left) << Left;
        QTest::newRow("arm down to the next arm") << Left << int(Qt::Key_Down) << Down;
        QTest::newRow("lower arm down to 2") << Down << int(Qt::Key_Down) << Digit(2);
        QTest::newRow("3 right to the camera") << Digit(3) << int(Qt::Key_Right) << Cam;
        QTest::newRow("right soft key up to volume down") << Rsk << int(Qt::Key_Up) << VolDown;
        QTest::newRow("1 left: nothing there") << Digit(1) << int(Qt::Key_Left) << Digit(1);
        QTest::newRow("space presses") << Digit(5) << int(Qt::Key_Space) << Digit(5);
        QTest::newRow("enter presses") << Star << int(Qt::Key_Return) << Star;
    }
    void arrowsMoveAndKeysPress()
    {
        QFETCH(int, from);
        QFETCH(int, key);
        QFETCH(int, to);
        PhoneKeypad keypad;
        keypad.resize(keypad.sizeHint());
        keypad.show();
        keypad.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&keypad));
        keypad.CMD(from)->setFocus();
        QSignalSpy pressed(&keypad, &PhoneKeypad::KeyButtonPressed);
        QTest::keyClick(keypad.CMD(from), Qt::Key(key));
        QCOMPARE(QApplication::focusWidget(), keypad.CMD(to));
        const bool press = key == Qt::Key_Space || key == Qt::Key_Return;
        QCOMPARE(pressed.count(), press ? 1 : 0);
        for (int i = 0; i < PhoneKeys::Count; ++i)
            QCOMPARE(bool(keypad.CMD(i)->focusPolicy() & Qt::TabFocus), i == to);
    }

    // Where a picture goes is FitRect's own test; the screen draws it there, in
    // finer pixels at 2x, and nothing once it is gone.
    void pictureIsDrawnWhereItFits_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::newRow("wider than the screen") << QSize(1000, 300);
        QTest::newRow("small stays small") << QSize(40, 30);
    }
    void pictureIsDrawnWhereItFits()
    {
        QFETCH(QSize, picture);
        PhoneKeypad keypad;
        keypad.resize(keypad.sizeHint());
        QImage plain(picture, QImage::Format_RGB32);
        plain.fill(QColor(255, 0, 255));
        keypad.SetPicture(plain);
        QWidget *screen = keypad.ScreenArea();
        int width = picture.width();
        int height = picture.height();
        const QRect shown = PictureBounds(screen->grab().toImage());
        QCOMPARE(shown, FitRect(screen->width(), screen->height(), width, height, true));
        QCOMPARE(PictureBounds(Render(*screen, 2)), QRect(shown.topLeft() * 2, shown.size() * 2));
        keypad.SetPicture(QImage());
        QVERIFY(PictureBounds(screen->grab().toImage()).isEmpty());
    }

    // Movements run clockwise from left; the two clicks and values beyond draw nothing.
    void movementArrowIcons()
    {
        const QPointF tips[] = {{}, {}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {}};
        for (int action = 0; action <= MouseActions::Count; ++action) {
            const QPixmap pixmap = MovementArrowIcon(action, QApplication::palette()).pixmap(QSize(32, 32), 2.0);
            QCOMPARE(pixmap.size(), QSize(64, 64));
            const QImage image = pixmap.toImage();
            QPointF weight;
            qreal total = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x) {
                    weight += QPointF(x + 0.5, y + 0.5) * qAlpha(image.pixel(x, y));
                    total += qAlpha(image.pixel(x, y));
                }
            const QPointF tip = tips[action];
            QCOMPARE(total > 0, !tip.isNull());
            // The ink is heaviest towards the tip: within 18 degrees of it (the next way is 45 away).
            const QPointF way = weight / std::max(total, 1.0) - QPointF(32, 32);
            const qreal cosine = QPointF::dotProduct(way, tip) / std::hypot(way.x(), way.y())
                                 / std::hypot(tip.x(), tip.y());
            QVERIFY2(tip.isNull() || cosine > 0.95, qPrintable(u"%1: %2,%3"_s.arg(action).arg(way.x()).arg(way.y())));
        }
    }
};

QTEST_MAIN(tst_PhoneKeypad)
#include "tst_phonekeypad.moc"
