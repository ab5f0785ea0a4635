// SPDX-License-Identifier: GPL-3.0-or-later
#include "phone/obexpacket.h"
#include "phone/obexsession.h"
#include "phone/seriallink.h"
#include "scripteddevice.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray Hex(const char *spaced)
{
    return QByteArray::fromHex(QByteArray(spaced).replace(' ', ""));
}

const QByteArray Continue = Hex("90 00 03");
const QByteArray Success = Hex("A0 00 03");
const QString RemoteName = u"Game.hid"_s;

// The client's bytes cut into packets by their length fields.
QList<QByteArray> Packets(const QByteArray &written)
{
    QList<QByteArray> packets;
    for (qsizetype at = 0; at + 3 <= written.size();) {
        const qsizetype length = qsizetype(quint8(written[at + 1])) << 8 | quint8(written[at + 2]);
        if (length < 3)
            break;
        packets << written.mid(at, length);
        at += length;
    }
    return packets;
}

// Opcode and length of each packet, "82:32 ...".
QString Shapes(const QList<QByteArray> &packets)
{
    QStringList shapes;
    for (const QByteArray &packet : packets)
        shapes << u"%1:%2"_s.arg(int(quint8(packet[0])), 2, 16, QChar(u'0')).arg(packet.size());
    return shapes.join(u' ');
}

QByteArray TestData(qsizetype size)
{
    QByteArray data(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        data[i] = char((i * 7 + i / 251) & 0xFF);
    return data;
}

} // namespace

class tst_ObexSession : public QObject
{
    Q_OBJECT

private slots:
    void connectAndDisconnect()
    {
        ScriptedDevice phone(Hex("A0 00 0C 10 00 04 00 CB 00 01 11 70") + Success);
        SerialLink link(&phone);
        cOBEXObject session(link);
        quint16 size = 0;
        QVERIFY(session.Connect(size, cOBEXObject::UUID()));
        QCOMPARE(size, DefaultMaxPacketSize);
        QCOMPARE(session.ConnectionId(), 70000u);
        QCOMPARE(session.PhoneMaxPacketSize(), 1024);
        QVERIFY(session.Disconnect());
        QVERIFY(!session.IsConnected());
        QCOMPARE(session.ConnectionId(), 0u);
        QCOMPARE(Packets(phone.Written()).value(1).toHex(' '), Hex("81 00 08 CB 00 00 11 70").toHex(' '));
    }

    void refusalsSendNothing()
    {
        ScriptedDevice phone(Hex("C3 00 0C 10 00 04 00 CB 00 00 00 09"));
        SerialLink link(&phone);
        cOBEXObject session(link);
        quint16 size = 0;
        QVERIFY(!session.Connect(size, {}));
        QCOMPARE(session.ConnectionId(), 0u);
        const qsizetype sent = phone.Written().size();
        QVERIFY(session.Disconnect()); // nothing to disconnect
        // A name that leaves the first packet no room is refused unsent.
        QVERIFY(!session.ObexPut(QString(MaxRemoteNameLength + 1, u'n'), "x"));
        QCOMPARE(phone.Written().size(), sent);
    }

    void put_data()
    {
        QTest::addColumn<qsizetype>("size");
        QTest::addColumn<QByteArray>("answers");
        QTest::addColumn<bool>("result");
        // Opcode and length of each request, and the progress events.
        QTest::addColumn<QString>("packets");
        QTest::addColumn<QString>("events");
        const qsizetype limit = FirstPieceLimit(RemoteName);
        QCOMPARE(limit, 1013 - 21);

        QTest::newRow("empty file is one final packet") << qsizetype(0) << Success << true << u"82:32"_s
                                                        << u"0/0"_s;
        QTest::newRow("one-packet limit fills 1024 bytes")
            << limit << Success << true << u"82:1024"_s << u"%1/%1"_s.arg(limit);
        QTest::newRow("one byte more: two pieces and an empty end")
            << limit + 1 << Continue + Continue + Success << true << u"02:1024 02:7 82:6"_s
            << u"%1/%2 %2/%2"_s.arg(limit).arg(limit + 1);
        QTest::newRow("full later pieces")
            << limit + 2 * PieceLimit << Continue + Continue + Continue + Success << true
            << u"02:1024 02:1024 02:1024 82:6"_s
            << u"%1/%3 %2/%3 %3/%3"_s.arg(limit).arg(limit + PieceLimit).arg(limit + 2 * PieceLimit);
        QTest::newRow("success to the first of several pieces fails after one event")
            << limit + 1 << Success + Continue + Success << false << u"02:1024"_s << u"%1/%2"_s.arg(limit).arg(limit + 1);
        QTest::newRow("refusal mid-upload") << limit + PieceLimit + 1 << Continue + Hex("C3 00 03") << false
                                            << u"02:1024 02:1024"_s << u"%1/%2"_s.arg(limit).arg(limit + PieceLimit + 1);
        QTest::newRow("phone falls silent") << limit + 1 << Continue << false << u"02:1024 02:7"_s
                                            << u"%1/%2"_s.arg(limit).arg(limit + 1);
        QTest::newRow("final packet refused") << limit + 1 << Continue + Continue + Hex("C0 00 03") << false
                                              << u"02:1024 02:7 82:6"_s << u"%1/%2 %2/%2"_s.arg(limit).arg(limit + 1);
    }
    void put()
    {
        QFETCH(qsizetype, size);
        QFETCH(QByteArray, answers);
        ScriptedDevice phone(answers);
        SerialLink link(&phone);
        cOBEXObject session(link);
        // Every reading of the clock is 8 ms after the one before: each piece
        // is answered 8 ms after it was sent.
        qint64 now = 0;
        session.SetClock([&now] { return now += 8; });
        QStringList events;
        qint32 acknowledged = 0;
        connect(&session, &cOBEXObject::DataTransfer, this, [&](qint32 sent, qint32 total, qint32 rate) {
            QCOMPARE(rate, (sent - acknowledged) * 1000 / 8); // of the piece just answered
            acknowledged = sent;
            events << u"%1/%2"_s.arg(sent).arg(total);
        });
        const QByteArray data = TestData(size);
        const bool result = session.ObexPut(RemoteName, data);
        QTEST(result, "result");
        QTEST(events.join(u' '), "events");

        const QList<QByteArray> packets = Packets(phone.Written());
        QTEST(Shapes(packets), "packets");

        // The first request: Name, Length, then the body; never a Connection Id.
        const QByteArray first = packets.first();
        const QByteArray prefix = NameHeader(RemoteName) + LengthHeader(data);
        QCOMPARE(first.mid(3, prefix.size()).toHex(' '), prefix.toHex(' '));
        QByteArray sentData;
        for (const QByteArray &packet : packets) {
            cPacket decoded;
            decoded.Decode(packet);
            QVERIFY(!decoded.ConnectionIDHeader());
            QCOMPARE(decoded.EndOfBody(), quint8(packet[0]) == ObexOpcode::PutFinal);
            sentData += decoded.Body();
        }
        QVERIFY(data.startsWith(sentData));
        if (result)
            QCOMPARE(sentData, data);
    }

    void abortSendsOneAbortPacket()
    {
        const qsizetype size = FirstPieceLimit(RemoteName) + 3 * PieceLimit;
        ScriptedDevice phone(Continue + Continue + Success);
        SerialLink link(&phone);
        cOBEXObject session(link);
        int events = 0;
        connect(&session, &cOBEXObject::DataTransfer, this, [&] {
            ++events;
            if (events == 2)
                session.SetAbortFlag(true);
        });
        QVERIFY(!session.ObexPut(RemoteName, TestData(size)));
        QCOMPARE(events, 2);
        const QList<QByteArray> packets = Packets(phone.Written());
        QCOMPARE(packets.size(), 3);
        QCOMPARE(packets.last().toHex(' '), Hex("FF 00 03").toHex(' '));
        QVERIFY(session.AbortFlag()); // the owner clears it
    }

    // The headers are the packet builders' own; the session adds the opcodes,
    // the Get loop over Continue answers and the remembered folder.
    void getSetPathAndDelete()
    {
        ScriptedDevice phone(Hex("90 00 06 48 00 03 90 00 08 48 00 05 61 62 A0 00 08 49 00 05 63 64 C4 00 03")
                             + Success + Success + Success);
        SerialLink link(&phone);
        cOBEXObject session(link);
        QCOMPARE(session.GetFolderListing(), QByteArray("abcd"));
        QCOMPARE(session.ObexGet(RemoteName), QByteArray());
        QCOMPARE(session.LastResponseCode(), 0xC4);
        QVERIFY(session.SetPath(QString()));
        QCOMPARE(session.CurrentPath(), u"\\"_s);
        QVERIFY(session.SetPath(u"Remote"_s));
        QCOMPARE(session.CurrentPath(), u"\\\\Remote"_s);
        QVERIFY(session.ObexDelete(RemoteName));
        const QList<QByteArray> packets = Packets(phone.Written());
        QCOMPARE(Shapes(packets), u"83:33 83:8 83:8 83:29 85:13 85:27 82:29"_s);
        QVERIFY(packets[0].endsWith(TypeHeader(u"x-obex/folder-listing")));
        QCOMPARE(packets[4].mid(3, 2), Hex("02 00")); // SetPath never creates the folder
        QVERIFY(packets[6].endsWith(NameHeader(RemoteName))); // Delete: a final Put without a body
    }
};

QTEST_GUILESS_MAIN(tst_ObexSession)
#include "tst_obexsession.moc"
