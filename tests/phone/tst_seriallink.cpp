// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakephone.h"
#include "phone/seriallink.h"
#include "scripteddevice.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_SerialLink : public QObject
{
    Q_OBJECT

private slots:
    void sendAtCommand_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("echo");
        QTest::addColumn<QString>("info");
        QTest::addColumn<bool>("success");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QByteArray>("left"); // what the phone sent after the answer
        const auto row = [](const char *what, const QByteArray &script, const char *echo, const QString &info,
                            bool success, const char *raw, const QByteArray &left = {}) {
            QTest::newRow(what) << script << QString::fromLatin1(echo) << info << success << QString::fromLatin1(raw)
                                << left;
        };
        const char *connect = "AT*EOBEX\r\r\nCONNECT\r\n";

        row("CR before the echo's LF does not end the read", connect, "AT*EOBEX\r", {}, true, connect);
        row("packet right behind CONNECT is kept", connect + Hex("A0 00 03"), "AT*EOBEX\r", {}, true, connect,
            Hex("A0 00 03"));
        row("text prompt ends the read with a doubled blank", "\r\n> rest", "", {}, true, "\r\n>  ", "rest");
        row("RING counts as success", "\r\nRING\r\n", "", {}, true, "\r\nRING\r\n");
        // The modem errors are information as well.
        for (const char *failure :
             {"ERROR", "BUSY", "NO CARRIER", "NO DIALTONE", "+CME ERROR: 4", "+CMS ERROR: 500"}) {
            const QByteArray answer = "\r\n" + QByteArray(failure) + "\r\n";
            QTest::addRow("%s ends the read and fails", failure)
                << answer + "OK\r\n"
                << QString() << (failure[0] == '+' ? QString::fromLatin1(failure) : QString()) << false
                << QString::fromLatin1(answer) << QByteArray("OK\r\n");
        }
        row("CONNECT with a speed is information, not final", "\r\nCONNECT 115200\r\nOK\r\nx", "", u"CONNECT 115200"_s,
            true, "\r\nCONNECT 115200\r\nOK\r\n", "x");
        row("result codes ignore case and blanks", "at\r\r\n  ok \r\n", "at\r", {}, true, "at\r\r\n  ok \r\n");
        row("information lines kept untouched", "AT+CGMM\r\r\n K750 \r\n\r\nline2\r\nOK\r\n", "AT+CGMM\r",
            u" K750 \r\nline2"_s, true, "AT+CGMM\r\r\n K750 \r\n\r\nline2\r\nOK\r\n");
        row("no final code is a failure after the time-out", "echo\r\nsomething", "echo", u"something"_s, false,
            "echo\r\nsomething");
        row("silence", "", "", {}, false, "");
        row("blanks only count as silence", "   ", "", {}, false, "");
    }
    void sendAtCommand()
    {
        QFETCH(QByteArray, script);
        ScriptedDevice phone(script);
        SerialLink link(&phone);
        const AtResponse answer = link.SendAtCommand(u"AT*EOBEX"_s);
        QCOMPARE(phone.Written(), QByteArray("AT*EOBEX\r"));
        QTEST(answer.Echo, "echo");
        QTEST(answer.Info, "info");
        QTEST(answer.Success, "success");
        QTEST(answer.Raw, "raw");
        QFETCH(QByteArray, left);
        QByteArray after;
        for (QByteArray piece; !(piece = link.ReadObexPacket()).isEmpty();)
            after += piece;
        QCOMPARE(after.toHex(' '), left.toHex(' '));
        // The last read found the script ended and waited the default time-out.
        const int waited = phone.LastWaitMs();
        QVERIFY2(waited > 4900 && waited <= 5000, qPrintable(QString::number(waited)));
    }

    void commandTerminator_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("lower-case command gets CR") << u"at+cprot=0"_s << QByteArray("at+cprot=0\r");
        QTest::newRow("message body gets Ctrl-Z") << u"hello"_s << QByteArray("hello\x1A");
    }
    void commandTerminator()
    {
        QFETCH(QString, text);
        ScriptedDevice phone;
        SerialLink link(&phone);
        (void)link.SendAtCommand(text);
        QTEST(phone.Written(), "sent");
    }

    void endlessLineIsCutWithoutLosingBytes()
    {
        ScriptedDevice phone(QByteArray(3 * MaxAtResponseBytes, 'x'));
        SerialLink link(&phone);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(link.ReadAtResponse().size(), MaxAtResponseBytes);
        QCOMPARE(link.ReadAtResponse(), QString());
    }

    void readObexPacket_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        const QByteArray big = Hex("90 04 00") + QByteArray(1021, 'b');

        QTest::newRow("answers back to back") << Hex("A0 00 03 90 00 03") << Hex("A0 00 03") << Hex("90 00 03");
        QTest::newRow("long packet then a short one") << big + Hex("A0 00 03") << big << Hex("A0 00 03");
        QTest::newRow("length below 3 reads until the time-out")
            << Hex("A0 00 02 11") << Hex("A0 00 02 11") << QByteArray();
        QTest::newRow("short packet is returned as it is") << Hex("A0 00 09 CB") << Hex("A0 00 09 CB") << QByteArray();
        QTest::newRow("endless stream is cut at the largest packet")
            << QByteArray(MaxObexPacketBytes + 100, '\0') << QByteArray(MaxObexPacketBytes, '\0')
            << QByteArray(100, '\0');
    }
    void readObexPacket()
    {
        QFETCH(QByteArray, script);
        ScriptedDevice phone(script);
        SerialLink link(&phone);
        QTEST(link.ReadObexPacket(), "first");
        QTEST(link.ReadObexPacket(), "second");
    }

    void notOpenDoesNothing()
    {
        SerialLink link;
        QVERIFY(!link.OpenPort(u"/dev/padmapper-no-such-port"_s, 115200));
        QCOMPARE(link.LastOpenError(), PortOpenError::NotFound);
        QVERIFY(!link.WritePort("x"));
        QCOMPARE(link.ReadAtResponse(), QString());
        QCOMPARE(link.ReadObexPacket(), QByteArray());
        QCOMPARE(link.SendAtCommand(u"AT"_s), AtResponse());
        QVERIFY(link.ClosePort());
    }

    void pseudoTerminalOpensAndTalks()
    {
        FakePhone phone;
        QVERIFY(phone.Start());
        SerialLink link;
        QVERIFY(link.OpenPort(phone.PortName(), 115200)); // no modem lines: not an error
        QCOMPARE(link.ReadTimeout(), 5000);
        QVERIFY(phone.PortIsExclusive());
        SerialLink second;
        QVERIFY(!second.OpenPort(phone.PortName(), 115200));
        QCOMPARE(second.LastOpenError(), PortOpenError::HeldByProgram);
        QCOMPARE(second.LastOpenHolder().ProcessId, QCoreApplication::applicationPid());
        QVERIFY(link.ClosePort());
        QVERIFY(!link.IsOpen());
        QVERIFY(!phone.PortIsExclusive());
    }
};

QTEST_GUILESS_MAIN(tst_SerialLink)
#include "tst_seriallink.moc"
