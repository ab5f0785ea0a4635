// SPDX-License-Identifier: GPL-3.0-or-later
#include "phone/obexpacket.h"
#include "phone/obexsession.h"
#include "phone/seriallink.h"
#include "scripteddevice.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QByteArray Continue = Hex("90 00 03");
const QByteArray Success = Hex("A0 00 03");
const QString RemoteName = u"Game.hid"_s;

// The properties a decode set, in a fixed order: rows then say in one line
// what a packet decodes to.
QString Describe(const cPacket &p)
{
    const auto hex = [](const QByteArray &bytes) { return QString::fromLatin1(bytes.toHex()); };
    const std::pair<bool, QString> parts[] = {
        {true, u"code=%1"_s.arg(p.ResponseCode())},
        {p.ConnectHeader(), u"connect=%1"_s.arg(p.MaxPacketSize())},
        {p.ConnectionIDHeader(), u"cid=%1"_s.arg(p.ConnectionID())},
        {p.LengthHeader(), u"length=%1"_s.arg(p.Length())},
        {p.NameHeader(), u"name="_s + p.Name()},
        {p.TypeHeader(), u"type="_s + p.TypeString()},
        {p.TargetHeader(), u"target="_s + hex(p.Target())},
        {p.WhoHeader(), u"who="_s + hex(p.Who())},
        {p.BodyHeader(), (p.EndOfBody() ? u"end="_s : u"body="_s) + QString::fromLatin1(p.Body())},
        {!p.UnknownData().isEmpty(), u"unknown="_s + hex(p.UnknownData())},
    };
    QStringList set;
    for (const auto &[present, text] : parts)
        if (present)
            set << text;
    return set.join(u' ');
}

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

} // namespace

class tst_ObexSession : public QObject
{
    Q_OBJECT

private slots:
    void build_data()
    {
        QTest::addColumn<QByteArray>("built");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("connect without target announces 1024") << ConnectRequest(0, {}) << Hex("80 00 07 10 00 04 00");
        QTest::newRow("connect with the folder-browsing target")
            << ConnectRequest(0, cOBEXObject::UUID())
            << Hex("80 00 1A 10 00 04 00 46 00 13 F9EC7BC4953C11D2984E525400DC9E09");
        QTest::newRow("type header counts its terminator")
            << TypeHeader(u"x-obex/folder-listing") << Hex("42 00 19") + "x-obex/folder-listing" + '\0';
        QTest::newRow("empty name is the bare prefix") << NameHeader(u"") << Hex("01 00 03");
        QTest::newRow("name above U+00FF shifts its bytes") << NameHeader(u"\u0141") << Hex("01 00 07 00 41 01 00");
        QTest::newRow("length header is 5 bytes") << LengthHeader(QByteArray(300000, 'x')) << Hex("C3 00 04 93 E0");
    }
    void build()
    {
        QFETCH(QByteArray, built);
        QFETCH(QByteArray, expected);
        QCOMPARE(built.toHex(' '), expected.toHex(' '));
    }

    void decode_data()
    {
        QTest::addColumn<QByteArray>("packet");
        QTest::addColumn<QString>("expected");
        QTest::newRow("connect answer") << Hex("A0 00 0C 10 00 04 00 CB 00 00 00 01")
                                        << u"code=160 connect=1024 cid=1"_s;
        QTest::newRow("nothing read") << QByteArray() << u"code=0"_s;
        QTest::newRow("shorter than its prefix") << Hex("A0 00") << u"code=160"_s;
        QTest::newRow("length field not compared") << Hex("A0 00 00 C3 00 00 00 05") << u"code=160 length=5"_s;
        QTest::newRow("time header and the rest are unknown")
            << Hex("A0 00 0D 44 00 05 31 32 48 00 04 61") << u"code=160 unknown=440005313248000461"_s;
        QTest::newRow("later body replaces the earlier")
            << Hex("A0 00 0B 48 00 04 61 49 00 04 62") << u"code=160 end=b"_s;
        QTest::newRow("version byte anywhere is a connect block")
            << Hex("A0 00 0B 48 00 04 61 10 00 02 00") << u"code=160 connect=512 body=a"_s;
        QTest::newRow("name") << Hex("A0 00 0C 01 00 09 00 41 00 62 00 00") << u"code=160 name=Ab"_s;
        QTest::newRow("name above U+00FF") << Hex("A0 00 0A 01 00 07 00 41 01 00") << u"code=160 name=\u0141"_s;
        QTest::newRow("empty name: 0x00 and a terminator byte")
            << Hex("A0 00 08 01 00 05 00 00") << u"code=160 name="_s;
        QTest::newRow("type drops its terminator") << Hex("A0 00 09 42 00 06 74 78 00") << u"code=160 type=tx"_s;
        QTest::newRow("target and who") << Hex("A0 00 0B 46 00 04 01 4A 00 04 02") << u"code=160 target=01 who=02"_s;
        // A damaged header ends the decode there, without reading beyond the packet.
        QTest::newRow("name length 4") << Hex("A0 00 0C 01 00 04 00 CB 00 00 00 07") << u"code=160"_s;
        QTest::newRow("cut header prefix") << Hex("A0 00 05 48 00") << u"code=160"_s;
        QTest::newRow("cut connection id") << Hex("A0 00 06 CB 00 01") << u"code=160"_s;
        QTest::newRow("cut connect block") << Hex("A0 00 05 10 00") << u"code=160"_s;
    }
    void decode()
    {
        QFETCH(QByteArray, packet);
        cPacket decoded;
        decoded.Decode("\x90\x00\x08\xCB\x00\x00\x00\x09"); // left-overs must not survive
        decoded.Decode(packet);
        QTEST(Describe(decoded), "expected");
    }

    // A refused Connect keeps nothing; an accepted one keeps the phone's
    // identifier, which the Disconnect then carries.
    void connectAndDisconnect()
    {
        ScriptedDevice phone(Hex("C3 00 0C 10 00 04 00 CB 00 00 00 09 A0 00 0C 10 00 04 00 CB 00 01 11 70") + Success);
        SerialLink link(&phone);
        cOBEXObject session(link);
        quint16 size = 0;
        QVERIFY(!session.Connect(size, {}));
        QCOMPARE(session.ConnectionId(), 0u);
        QVERIFY(session.Disconnect()); // nothing to disconnect
        // A name that leaves the first packet no room is refused unsent.
        QVERIFY(!session.ObexPut(QString(MaxRemoteNameLength + 1, u'n'), "x"));
        QCOMPARE(Shapes(Packets(phone.Written())), u"80:7"_s);
        QVERIFY(session.Connect(size, cOBEXObject::UUID()));
        QCOMPARE(size, DefaultMaxPacketSize);
        QCOMPARE(session.ConnectionId(), 70000u);
        QCOMPARE(session.PhoneMaxPacketSize(), 1024);
        QVERIFY(session.Disconnect());
        QVERIFY(!session.IsConnected());
        QCOMPARE(session.ConnectionId(), 0u);
        // Only the identifier's low 16 bits go out.
        QCOMPARE(Packets(phone.Written()).last().toHex(' '), Hex("81 00 08 CB 00 00 11 70").toHex(' '));
    }

    void put_data()
    {
        QTest::addColumn<qsizetype>("size");
        QTest::addColumn<QByteArray>("answers");
        QTest::addColumn<int>("abortAt"); // the progress event that sets the abort flag
        QTest::addColumn<bool>("result");
        // Opcode and length of each request, and the progress events.
        QTest::addColumn<QString>("packets");
        QTest::addColumn<QString>("events");
        const qsizetype limit = FirstPieceLimit(RemoteName);
        const QString two = u"%1/%2 %2/%2"_s.arg(limit).arg(limit + 1);

        QTest::newRow("empty file is one final packet")
            << qsizetype(0) << Success << 0 << true << u"82:32"_s << u"0/0"_s;
        QTest::newRow("one-packet limit fills 1024 bytes")
            << limit << Success << 0 << true << u"82:1024"_s << u"%1/%1"_s.arg(limit);
        QTest::newRow("one byte more: two pieces and an empty end")
            << limit + 1 << Continue + Continue + Success << 0 << true << u"02:1024 02:7 82:6"_s << two;
        QTest::newRow("full later pieces")
            << limit + 2 * PieceLimit << Continue + Continue + Continue + Success << 0 << true
            << u"02:1024 02:1024 02:1024 82:6"_s
            << u"%1/%3 %2/%3 %3/%3"_s.arg(limit).arg(limit + PieceLimit).arg(limit + 2 * PieceLimit);
        QTest::newRow("success to the first of several pieces fails after one event")
            << limit + 1 << Success + Continue + Success << 0 << false << u"02:1024"_s
            << u"%1/%2"_s.arg(limit).arg(limit + 1);
        QTest::newRow("refusal mid-upload")
            << limit + PieceLimit + 1 << Continue + Hex("C3 00 03") << 0 << false << u"02:1024 02:1024"_s
            << u"%1/%2"_s.arg(limit).arg(limit + PieceLimit + 1);
        QTest::newRow("final packet refused")
            << limit + 1 << Continue + Continue + Hex("C0 00 03") << 0 << false << u"02:1024 02:7 82:6"_s << two;
        // The phone answers the Abort with Success, which ends the loop.
        QTest::newRow("abort: one Abort packet after the current piece")
            << limit + 3 * PieceLimit << Continue + Continue + Success << 2 << false << u"02:1024 02:1024 ff:3"_s
            << u"%1/%3 %2/%3"_s.arg(limit).arg(limit + PieceLimit).arg(limit + 3 * PieceLimit);
    }
    void put()
    {
        QFETCH(qsizetype, size);
        QFETCH(QByteArray, answers);
        QFETCH(int, abortAt);
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
            if (events.size() == abortAt)
                session.SetAbortFlag(true);
        });
        const QByteArray data = TestData(size);
        const bool result = session.ObexPut(RemoteName, data);
        QTEST(result, "result");
        QTEST(events.join(u' '), "events");
        QCOMPARE(session.AbortFlag(), abortAt > 0); // the owner clears it

        const QList<QByteArray> packets = Packets(phone.Written());
        QTEST(Shapes(packets), "packets");
        // The first request: Name, Length, then the body; never a Connection Id.
        const QByteArray prefix = NameHeader(RemoteName) + LengthHeader(data);
        QCOMPARE(packets.first().mid(3, prefix.size()).toHex(' '), prefix.toHex(' '));
        QByteArray sentData;
        for (const QByteArray &packet : packets) {
            cPacket decoded;
            decoded.Decode(packet);
            QVERIFY(!decoded.ConnectionIDHeader());
            QCOMPARE(decoded.EndOfBody(), quint8(packet[0]) == ObexOpcode::PutFinal);
            sentData += decoded.Body();
        }
        QCOMPARE(sentData, result ? data : data.first(sentData.size()));
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
        // Delete is a final Put without a body.
        QCOMPARE(Shapes(packets), u"83:33 83:8 83:8 83:29 85:13 85:27 82:29"_s);
        QCOMPARE(packets[4].mid(3, 2), Hex("02 00")); // SetPath never creates the folder
    }
};

QTEST_GUILESS_MAIN(tst_ObexSession)
#include "tst_obexsession.moc"
