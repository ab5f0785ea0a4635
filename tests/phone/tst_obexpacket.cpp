// SPDX-License-Identifier: GPL-3.0-or-later
#include "phone/obexpacket.h"
#include "phone/obexsession.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray Hex(const char *spaced)
{
    return QByteArray::fromHex(QByteArray(spaced).replace(' ', ""));
}

// The properties a decode set, in a fixed order: rows then say in one line
// what a packet decodes to.
QString Describe(const cPacket &packet)
{
    QStringList parts{u"code=%1"_s.arg(packet.ResponseCode())};
    if (packet.ConnectHeader())
        parts << u"connect=%1"_s.arg(packet.MaxPacketSize());
    if (packet.ConnectionIDHeader())
        parts << u"cid=%1"_s.arg(packet.ConnectionID());
    if (packet.LengthHeader())
        parts << u"length=%1"_s.arg(packet.Length());
    if (packet.NameHeader())
        parts << u"name=%1"_s.arg(packet.Name());
    if (packet.TypeHeader())
        parts << u"type=%1"_s.arg(packet.TypeString());
    if (packet.TargetHeader())
        parts << u"target=%1"_s.arg(QString::fromLatin1(packet.Target().toHex()));
    if (packet.WhoHeader())
        parts << u"who=%1"_s.arg(QString::fromLatin1(packet.Who().toHex()));
    if (packet.BodyHeader())
        parts << (packet.EndOfBody() ? u"end=%1"_s : u"body=%1"_s).arg(QString::fromLatin1(packet.Body()));
    if (!packet.UnknownData().isEmpty())
        parts << u"unknown=%1"_s.arg(QString::fromLatin1(packet.UnknownData().toHex()));
    return parts.join(u' ');
}

} // namespace

class tst_ObexPacket : public QObject
{
    Q_OBJECT

private slots:
    void build_data()
    {
        QTest::addColumn<QByteArray>("built");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray uuid = cOBEXObject::UUID();

        QTest::newRow("connect without target announces 1024") << ConnectRequest(0, {}) << Hex("80 00 07 10 00 04 00");
        QTest::newRow("connect with the folder-browsing target")
            << ConnectRequest(0, uuid) << Hex("80 00 1A 10 00 04 00 46 00 13 F9EC7BC4953C11D2984E525400DC9E09");
        QTest::newRow("disconnect carries the low 16 bits only")
            << DisconnectRequest(70000) << Hex("81 00 08 CB 00 00 11 70");
        QTest::newRow("type header counts its terminator")
            << TypeHeader(u"x-obex/folder-listing") << Hex("42 00 19") + "x-obex/folder-listing" + '\0';
        QTest::newRow("name is big-endian UTF-16 below U+0100") << NameHeader(u"Ab") << Hex("01 00 09 00 41 00 62 00 00");
        QTest::newRow("empty name is the bare prefix") << NameHeader(u"") << Hex("01 00 03");
        QTest::newRow("name above U+00FF shifts its bytes") << NameHeader(u"\u0141") << Hex("01 00 07 00 41 01 00");
        QTest::newRow("empty end of body") << BodyHeader({}, true) << Hex("49 00 03");
        QTest::newRow("body") << BodyHeader("ab", false) << Hex("48 00 05 61 62");
        QTest::newRow("length header is 5 bytes") << LengthHeader(QByteArray(300000, 'x')) << Hex("C3 00 04 93 E0");
        QTest::newRow("connection id header") << ConnectionIdHeader(0x01020304) << Hex("CB 01 02 03 04");
        QTest::newRow("number cut to its width") << NumberBytes(0x12345, 2) << Hex("23 45");
        QTest::newRow("abort has no headers") << ObexPacket(ObexOpcode::Abort) << Hex("FF 00 03");
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

        QTest::newRow("connect answer") << Hex("A0 00 0C 10 00 04 00 CB 00 00 00 01") << u"code=160 connect=1024 cid=1"_s;
        QTest::newRow("continue alone") << Hex("90 00 03") << u"code=144"_s;
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
        QTest::newRow("empty name: 0x00 and a terminator byte")
            << Hex("A0 00 08 01 00 05 00 00") << u"code=160 name="_s;
        QTest::newRow("type drops its terminator") << Hex("A0 00 09 42 00 06 74 78 00") << u"code=160 type=tx"_s;
        QTest::newRow("target and who") << Hex("A0 00 0B 46 00 04 01 4A 00 04 02") << u"code=160 target=01 who=02"_s;

        QTest::newRow("header length below 3 stops there")
            << Hex("A0 00 0B CB 00 00 00 07 48 00 01 61") << u"code=160 cid=7"_s;
        QTest::newRow("header running past the packet stops there")
            << Hex("A0 00 08 C3 00 00 00 09 48 FF FF 61") << u"code=160 length=9"_s;
        QTest::newRow("name length 3 stops there")
            << Hex("A0 00 0B 01 00 03 CB 00 00 00 07") << u"code=160"_s;
        QTest::newRow("name length 4 stops there")
            << Hex("A0 00 0C 01 00 04 00 CB 00 00 00 07") << u"code=160"_s;
        QTest::newRow("cut header prefix") << Hex("A0 00 05 48 00") << u"code=160"_s;
        QTest::newRow("cut connection id") << Hex("A0 00 06 CB 00 01") << u"code=160"_s;
        QTest::newRow("cut connect block") << Hex("A0 00 05 10 00") << u"code=160"_s;
    }
    void decode()
    {
        QFETCH(QByteArray, packet);
        QFETCH(QString, expected);
        cPacket decoded;
        decoded.Decode("\x90\x00\x08\xCB\x00\x00\x00\x09"); // left-overs must not survive
        decoded.Decode(packet);
        QCOMPARE(Describe(decoded), expected);
    }

    void nameRoundTrip_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("ascii") << u"Game.hid"_s;
        QTest::newRow("latin-1") << u"Spi\u00E8le.hid"_s;
        QTest::newRow("beyond latin-1") << u"\u0141\u20AC\u4E2D.hid"_s;
    }
    void nameRoundTrip()
    {
        QFETCH(QString, name);
        cPacket decoded;
        decoded.Decode(ObexPacket(ObexResponse::Success, NameHeader(name)));
        QCOMPARE(decoded.Name(), name);
    }
};

QTEST_GUILESS_MAIN(tst_ObexPacket)
#include "tst_obexpacket.moc"
