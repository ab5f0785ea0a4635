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
#include <cmath>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

PhoneKeyButton *Key(const PhoneKeypad &keypad, int index)
{
    return qobject_cast<PhoneKeyButton *>(keypad.CMD(index));
}

// Shown at its preferred size in the active window, as the keys need for focus.
[[nodiscard]] bool ShowActive(PhoneKeypad &keypad)
{
    keypad.resize(keypad.sizeHint());
    keypad.show();
    keypad.activateWindow();
    return QTest::qWaitForWindowActive(&keypad);
}

QPixmap Render(QWidget &widget, qreal ratio)
{
    QPixmap pixmap(widget.size() * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    widget.render(&pixmap, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
    return pixmap;
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
        using namespace PhoneKeys;
        const int screen = -1;
        auto at = [&keypad](int index) {
            return index < 0 ? keypad.ScreenArea()->geometry() : keypad.CMD(index)->geometry();
        };
        for (int i = screen; i < Count; ++i) {
            QVERIFY2(i < 0 || keypad.CMD(i)->isVisible(), qPrintable(QString::number(i)));
            QVERIFY(!at(i).isEmpty());
            QVERIFY2(keypad.rect().contains(at(i)), qPrintable(QString::number(i)));
            for (int j = i + 1; j < Count; ++j)
                QVERIFY2(!at(i).intersects(at(j)), qPrintable(u"%1 and %2"_s.arg(i).arg(j)));
        }
        QCOMPARE(keypad.CMD(-1), nullptr);
        QCOMPARE(keypad.CMD(Count), nullptr);

        // Where a phone has its keys: a before b from left to right (x) or top to
        // bottom (y); or level with it (centres at most a pixel apart).
        const std::tuple<int, char, int> order[] = { { screen, 'y', Lsk }, { Lsk, 'x', Joy }, { Joy, 'x', Rsk },
            { Lsk, 'y', Digit(1) }, { Rsk, 'y', Digit(3) }, { Left, 'x', Joy }, { Joy, 'x', Right },
            { Up, 'y', Joy }, { Joy, 'y', Down }, { Down, 'y', Digit(2) }, { Left, '-', Joy }, { Right, '-', Joy },
            { Up, '|', Joy }, { Down, '|', Joy }, { VolUp, 'y', VolDown }, { VolDown, 'y', Cam },
            { Rsk, 'y', Cam } };
        for (const auto &[a, relation, b] : order) {
            const bool holds = relation == 'x' ? at(a).right() < at(b).left()
                : relation == 'y'              ? at(a).bottom() < at(b).top()
                : relation == '-'              ? qAbs(at(a).center().y() - at(b).center().y()) <= 1
                                               : qAbs(at(a).center().x() - at(b).center().x()) <= 1;
            QVERIFY2(holds, qPrintable(u"%1 %2 %3"_s.arg(a).arg(QChar::fromLatin1(relation)).arg(b)));
        }
        // The side keys stand out of the right edge, the volume keys beside the screen.
        for (int side : { VolUp, VolDown, Cam }) {
            for (int front : { screen, Rsk, Hash })
                QVERIFY(at(front).right() < at(side).left());
        }
        QVERIFY(at(VolUp).top() < at(screen).bottom());
        // The digits in rows of three: 1 2 3, 4 5 6, 7 8 9, * 0 #.
        for (int i = 1; i < 12; ++i) {
            const int key = Digit1 + i;
            if (i % 3 != 0)
                QVERIFY(at(key - 1).right() < at(key).left() && at(key - 1).top() == at(key).top());
            if (i >= 3)
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

    // Words on the soft and digit keys; the others show symbols and have a name
    // for screen readers instead.
    void captions()
    {
        PhoneKeypad keypad;
        const QStringList captions = u"&Left &Right - - - - - - - - 1 2 3 4 5 6 7 8 9 * 0 #"_s.split(u' ');
        for (int i = 0; i < PhoneKeys::Count; ++i) {
            const QString caption = captions.at(i) == "-"_L1 ? QString() : captions.at(i);
            QCOMPARE(keypad.CMD(i)->text(), caption);
            QCOMPARE(keypad.CMD(i)->accessibleName().isEmpty(), !caption.isEmpty());
        }
    }

    void setActiveButtonDrawsOneDown_data()
    {
        QTest::addColumn<int>("active");
        QTest::addColumn<int>("drawnDown"); // -1: none
        QTest::newRow("first") << 0 << 0;
        QTest::newRow("last") << 21 << 21;
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
    // Each kind of key takes a click where it is drawn; none does while the keys
    // are disabled.
    void signalsOnFocusAndRelease()
    {
        QFETCH(int, index);
        PhoneKeypad keypad;
        QVERIFY(ShowActive(keypad));
        keypad.SetActiveButton(PhoneKeys::Digit(8));
        // Activation gave some key the focus already.
        if (QApplication::focusWidget())
            QApplication::focusWidget()->clearFocus();
        QSignalSpy focused(&keypad, &PhoneKeypad::KeyButtonFocused);
        QSignalSpy released(&keypad, &PhoneKeypad::KeyButtonReleased);
        QSignalSpy lost(&keypad, &PhoneKeypad::KeyButtonFocusLost);
        keypad.SetKeyButtonsEnabled(false);
        QTest::mouseClick(keypad.CMD(index), Qt::LeftButton);
        QCOMPARE(focused.count() + released.count(), 0);
        keypad.SetKeyButtonsEnabled(true);
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
        QVERIFY(ShowActive(*keypad));
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

    void tabVisitsEveryKeyOnce()
    {
        PhoneKeypad keypad;
        QVERIFY(ShowActive(keypad));
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
        QImage plain(picture, QImage::Format_RGB32);
        plain.fill(QColor(255, 0, 255));
        keypad.SetPicture(plain);
        QWidget *screen = keypad.ScreenArea();
        int width = picture.width();
        int height = picture.height();
        const QRect shown = PictureBounds(screen->grab().toImage());
        QCOMPARE(shown, FitRect(screen->width(), screen->height(), width, height, true));
        QCOMPARE(PictureBounds(Render(*screen, 2).toImage()), QRect(shown.topLeft() * 2, shown.size() * 2));
        keypad.SetPicture(QImage());
        QVERIFY(PictureBounds(screen->grab().toImage()).isEmpty());
    }

    // Movements run clockwise from left; the two clicks and values beyond draw nothing.
    void movementArrowIcons_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<QPointF>("tip"); // the way the arrow points; null for no arrow
        const QPointF tips[] = { {}, {}, { -1, 0 }, { -1, -1 }, { 0, -1 }, { 1, -1 }, { 1, 0 }, { 1, 1 }, { 0, 1 },
            { -1, 1 }, {} };
        for (int action = 0; action <= MouseActions::Count; ++action)
            QTest::addRow("action %d", action) << action << tips[action];
    }
    void movementArrowIcons()
    {
        QFETCH(int, action);
        QFETCH(QPointF, tip);
        const QIcon icon = MovementArrowIcon(action, QApplication::palette());
        for (qreal ratio : { 1.0, 2.0 }) {
            const QPixmap pixmap = icon.pixmap(QSize(32, 32), ratio);
            QCOMPARE(pixmap.size(), QSize(32, 32) * ratio);
            QCOMPARE(pixmap.devicePixelRatio(), ratio);
            // The ink is heaviest towards the arrow's tip.
            const QImage image = pixmap.toImage();
            QPointF weight;
            qreal total = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x) {
                    const qreal alpha = qAlpha(image.pixel(x, y));
                    weight += QPointF(x + 0.5, y + 0.5) / ratio * alpha;
                    total += alpha;
                }
            QCOMPARE(total > 0, !tip.isNull());
            if (tip.isNull())
                continue;
            const QPointF direction = weight / total - QPointF(16, 16);
            // Within 18 degrees of the wanted way; the next direction is 45 away.
            const qreal cosine = QPointF::dotProduct(direction, tip)
                / (std::hypot(direction.x(), direction.y()) * std::hypot(tip.x(), tip.y()));
            QVERIFY2(cosine > 0.95, qPrintable(u"%1,%2"_s.arg(direction.x()).arg(direction.y())));
        }
    }
};

QTEST_MAIN(tst_PhoneKeypad)
#include "tst_phonekeypad.moc"
