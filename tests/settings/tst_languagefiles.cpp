// SPDX-License-Identifier: GPL-3.0-or-later
#include "bluetooth/bluetoothtexts.h"
#include "editor/editortexts.h"
#include "keymap/keyactiontext.h"
#include "keymap/keymaptexts.h"
#include "keymap/keytable.h"
#include "phone/phonetexts.h"
#include "profile/profiletexts.h"
#include "settings/commontexts.h"
#include "support/ansitext.h"
#include "support/inifile.h"

#include "../testfiles.h"

#include <QMap>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTest>

#include <span>

using namespace Qt::StringLiterals;

// The shipped language files against the program's text tables: they hold
// every text the program asks for, the English file repeats the built-in
// texts, the German one keeps their placeholders and its access keys do not
// collide within one menu or window.

namespace {

const QStringList LanguageFileNames = {u"English.lng"_s, u"Deutsch.lng"_s};

QString DataPath(const QString &name)
{
    return QStringLiteral(PADMAPPER_SOURCE_DIR) + "/data/"_L1 + name;
}

IniFile Load(const QString &name)
{
    return IniFile::Load(DataPath(name)).value_or(IniFile());
}

// Every text a language file can change.
QList<UiText> AllTexts()
{
    QList<UiText> all;
    const std::span<const UiText> tables[] = {CommonTexts, KeymapTexts,    ProfileTexts,     PhoneTexts,
                                              EditorTexts, BluetoothTexts, MouseToolTipTexts};
    for (const auto &table : tables)
        all.append(QList<UiText>(table.begin(), table.end()));
    for (int i = 0; i < SpecialKeyCount; ++i)
        all << SpecialKeyAt(i).Name;
    for (const PhoneKeyName &key : PhoneKeyNames)
        all << key.Name;
    all.removeIf([](const UiText &text) { return text.Key.isEmpty(); });
    return all;
}

QStringList Placeholders(const QString &text)
{
    // "COM%p" is a token of its own: on systems without COM ports the whole of
    // it becomes the device name.
    static const QRegularExpression placeholder(u"COM%p|%[fptbrnaim]"_s);
    QStringList found;
    for (const QRegularExpressionMatch &m : placeholder.globalMatch(text))
        found << m.captured();
    found.sort();
    return found;
}

QString Name(const UiText &text)
{
    return u"%1/%2"_s.arg(text.Section, text.Key);
}

void FileRows()
{
    QTest::addColumn<QString>("file");
    for (const QString &name : LanguageFileNames)
        QTest::newRow(qPrintable(name)) << name;
}

} // namespace

class tst_LanguageFiles : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        SetLanguage(QString());
        ApplyKeyNameLanguage();
    }

    void filesHoldTheProgramsKeysOnce_data() { FileRows(); }

    // Windows-1252 with CR LF, each section and key once, no value beyond what
    // the reader keeps, and no key the program does not ask for (a missing one
    // shows in textsMatchTheBuiltInOnes).
    void filesHoldTheProgramsKeysOnce()
    {
        QFETCH(QString, file);
        const QByteArray bytes = ReadAll(DataPath(file));
        QVERIFY2(bytes.startsWith(';'), "no comment line on top, or a byte order mark");
        QCOMPARE(bytes.count('\n'), bytes.count("\r\n"));
        QCOMPARE(bytes.count('\r'), bytes.count("\r\n"));
        // Any non-ASCII byte of Windows-1252 text makes it invalid as UTF-8.
        QStringDecoder utf8(QStringDecoder::Utf8);
        (void)QString(utf8(bytes));
        const bool ascii = std::all_of(bytes.cbegin(), bytes.cend(), [](char c) { return uchar(c) < 0x80; });
        QVERIFY2(ascii || utf8.hasError(), "the file is UTF-8");

        QStringList entries, problems; // "[section]" and "section/key", lower case
        QString section;
        for (const QString &raw : FromAnsi(bytes).split("\r\n"_L1)) {
            const QString line = raw.trimmed();
            const qsizetype equals = line.indexOf(u'=');
            if (line.startsWith(u'[') && line.endsWith(u']')) {
                section = line.sliced(1, line.size() - 2).trimmed().toLower();
                entries << u'[' + section + u']';
            } else if (equals > 0 && !section.isEmpty()) {
                entries << section + u'/' + line.first(equals).trimmed().toLower();
                if (line.sliced(equals + 1).trimmed().size() > IniFile::MaximumValueLength)
                    problems << entries.last() + " is too long"_L1;
            } else if (!line.isEmpty() && !line.startsWith(u';')) {
                problems << "stray line: "_L1 + line;
            }
        }
        QStringList keys;
        for (const UiText &text : AllTexts())
            keys << Name(text).toLower();
        for (const QString &entry : entries) {
            if (entries.count(entry) > 1)
                problems << entry + " twice"_L1;
            if (entry.contains(u'/') && !keys.contains(entry))
                problems << entry + " not used by the program"_L1;
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    // The English file repeats the built-in texts and the German one keeps
    // their placeholders. A key that several texts share with different
    // built-in texts (Errors "10", whose one text serves two messages) may carry
    // any of them; the mouse tool tips' built-in "-" only holds the place.
    void textsMatchTheBuiltInOnes()
    {
        const IniFile english = Load(u"English.lng"_s), german = Load(u"Deutsch.lng"_s);
        const QList<UiText> all = AllTexts();
        QStringList problems;
        for (const UiText &text : all) {
            const QString en = english.Value(text.Section, text.Key), de = german.Value(text.Section, text.Key);
            if (en.isEmpty() || de.isEmpty() || Placeholders(en) != Placeholders(de))
                problems << u"%1: \"%2\" / \"%3\""_s.arg(Name(text), en, de);
            const auto builtIn = [&](const UiText &other) {
                return other.Section == text.Section && other.Key == text.Key && other.English == en;
            };
            if (text.English != u"-" && !text.English.isEmpty() && std::none_of(all.cbegin(), all.cend(), builtIn))
                problems << u"%1: \"%2\", built in \"%3\""_s.arg(Name(text), en, text.English);
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    void accessKeysDoNotCollide()
    {
        // The texts that share a menu (each entry needs an access key) or a
        // window: the section, then the keys.
        const std::pair<const char *, bool> groups[] = {
            {"MainWindow Menu_Open Menu_Save Menu_SaveAs Menu_Import Menu_Export Menu_Print Menu_FileUpload "
             "Menu_ViewKeymap Menu_Settings Menu_Exit Menu_Recent",
             true},
            {"MainWindow Menu_Picture Menu_Keymap Menu_Overview", true},
            {"MainWindow Menu_Readme Menu_About", true},
            {"MainWindow Menu_PopUpLoad Menu_PopUpSave", true},
            {"MainWindow Menu_File Menu_Edit Menu_Help Button_Left Button_Right", true},
            {"MainWindow Menu_Undo Menu_Redo", true},
            {"SettingsWindow Label_Language Frame_FileTypes Frame_hid Frame_kcf Frame_PhoneConnection Frame_Port "
             "Frame_Speed Button_OK Button_Abort",
             false},
        };
        QStringList problems;
        for (const QString &file : LanguageFileNames) {
            const IniFile ini = Load(file);
            for (const auto &[group, isMenu] : groups) {
                QStringList members = QString::fromLatin1(group).split(u' ');
                const QString section = members.takeFirst();
                QMap<QString, QStringList> users;
                for (const QString &key : std::as_const(members)) {
                    const QString value = ini.Value(section, key);
                    QString access; // the characters after a single "&"
                    for (qsizetype i = 0; i + 1 < value.size(); ++i) {
                        if (value[i] == u'&' && value[++i] != u'&')
                            access += value[i].toLower();
                    }
                    if (value.isEmpty() || access.size() > 1 || (isMenu && access.isEmpty()))
                        problems << u"%1 %2: \"%3\" has %4 access keys"_s.arg(file, key, value).arg(access.size());
                    for (const QChar c : access)
                        users[c] << key;
                }
                for (auto it = users.cbegin(); it != users.cend(); ++it) {
                    if (it.value().size() > 1)
                        problems << u"%1: '%2' in %3"_s.arg(file, it.key(), it.value().join(u", "_s));
                }
            }
        }
        // The built-in English File menu gives S to Save and Send, E to Export and Exit.
        for (const char *known :
             {"English.lng: 'e' in Menu_Export, Menu_Exit", "English.lng: 's' in Menu_Save, Menu_FileUpload"})
            QVERIFY2(problems.removeOne(QLatin1StringView(known)), known);
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    void specialKeyNamesFindTheirKeys_data() { FileRows(); }

    // The special-key list hands the editor a name, which must lead back to its
    // key: a name shared with another key (or cut short) would pick the wrong one.
    void specialKeyNamesFindTheirKeys()
    {
        QFETCH(QString, file);
        SetLanguage(DataPath(file));
        ApplyKeyNameLanguage();
        const QStringList names = SpecialKeyNames();
        QCOMPARE(names.size(), SpecialKeyCount);
        for (int i = 0; i < SpecialKeyCount; ++i)
            QCOMPARE(KeyCodeOfName(names[i]), SpecialKeyAt(i).KeyCode);
    }
};

QTEST_APPLESS_MAIN(tst_LanguageFiles)
#include "tst_languagefiles.moc"
