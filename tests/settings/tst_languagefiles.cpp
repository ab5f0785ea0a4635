// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keyactiontext.h"
#include "keymap/keymap.h"
#include "keymap/keytable.h"
#include "settings/languagetext.h"
#include "support/ansitext.h"
#include "support/inifile.h"

#include "../testfiles.h"

#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QMap>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

// The shipped language files against the lookups in the sources: every key the
// program asks for is there, the English file repeats the built-in texts, the
// German one keeps their placeholders and has access keys that do not collide.

namespace {

const QStringList LanguageFileNames = { u"English.lng"_s, u"Deutsch.lng"_s };

struct Lookup {
    QString Where; // file:line, for messages
    QString Section;
    QString Key;
    std::optional<QString> Default; // empty when the call builds it at run time
};

QString DataPath(const QString &name)
{
    return QStringLiteral(PADMAPPER_SOURCE_DIR) + "/data/"_L1 + name;
}

// The value of a C++ string-literal expression: one or more adjacent literals
// with an optional u prefix and _s/_L1 suffix, or an empty QString.
std::optional<QString> LiteralValue(QString expression, const QHash<QString, QString> &constants)
{
    expression = expression.trimmed();
    if (expression == "QString()"_L1 || expression == "{}"_L1)
        return QString();
    if (constants.contains(expression))
        return constants.value(expression);
    static const QRegularExpression whole(uR"re(^(?:u?"(?:[^"\\]|\\.)*"\s*)+(?:_s|_L1)?$)re"_s);
    if (!whole.match(expression).hasMatch())
        return std::nullopt;
    static const QRegularExpression piece(uR"re("((?:[^"\\]|\\.)*)")re"_s);
    QString value;
    for (const QRegularExpressionMatch &m : piece.globalMatch(expression)) {
        QString text = m.captured(1);
        text.replace("\\\""_L1, "\""_L1).replace("\\n"_L1, "\n"_L1).replace("\\\\"_L1, "\\"_L1);
        value += text;
    }
    return value;
}

// Every language lookup in one source file whose section and key are string
// literals (or constants holding one): LanguageText(section, key, default)
// itself and the file's one-section helpers such as MainWindowText(key, default).
QList<Lookup> ScanSource(const QString &path, const QString &relativePath)
{
    const QString text = FromAnsi(ReadAll(path));
    const QString literal = uR"re((?:u?"(?:[^"\\]|\\.)*"\s*)+(?:_s|_L1)?)re"_s;

    QHash<QString, QString> constants;
    static const QRegularExpression constant(
        uR"re((?:const|constexpr)\s+(?:QString|auto|QLatin1StringView|QStringView)\s+(\w+)\s*=\s*(u?"[^"\\]*"(?:_s|_L1)?)\s*;)re"_s);
    for (const QRegularExpressionMatch &m : constant.globalMatch(text))
        constants.insert(m.captured(1), *LiteralValue(m.captured(2), {}));

    QHash<QString, QString> sections { { u"LanguageText"_s, QString() } }; // callee -> fixed section
    static const QRegularExpression helper(
        uR"re(QString\s+(\w+)\s*\(\s*const\s+QString\s*&\s*(\w+)\s*,\s*const\s+QString\s*&\s*(\w+)\s*\)\s*\{\s*return\s+LanguageText\s*\(([^,()]+),\s*\2\s*,\s*\3\s*\)\s*;)re"_s);
    for (const QRegularExpressionMatch &m : helper.globalMatch(text)) {
        if (const auto section = LiteralValue(m.captured(4), constants))
            sections.insert(m.captured(1), *section);
    }

    // callee ( [section ,] key , [default )]
    const QString argument = u"(%1|\\w+)\\s*,\\s*"_s.arg(literal);
    const QRegularExpression call(u"\\b(%1)\\s*\\((?:\\s*%2)?\\s*%2(?:(%3|QString\\(\\)|\\{\\})\\s*\\))?"_s.arg(
        sections.keys().join(u'|'), argument, literal));
    QList<Lookup> lookups;
    for (const QRegularExpressionMatch &m : call.globalMatch(text)) {
        const qsizetype lineStart = text.lastIndexOf(u'\n', m.capturedStart()) + 1;
        const bool isHelper = m.captured(1) != "LanguageText"_L1;
        if (text.sliced(lineStart, m.capturedStart() - lineStart).contains("//"_L1)
            || isHelper == m.hasCaptured(2))
            continue;
        const auto section = isHelper ? std::optional(sections.value(m.captured(1)))
                                      : LiteralValue(m.captured(2), constants);
        const auto key = LiteralValue(m.captured(3), constants);
        if (!section || !key || section->isEmpty() || key->isEmpty())
            continue; // a helper's own body or a key built at run time
        const auto line = text.first(m.capturedStart()).count(u'\n') + 1;
        lookups.append(Lookup { relativePath + u':' + QString::number(line), *section, *key,
            m.hasCaptured(4) ? LiteralValue(m.captured(4), constants) : std::nullopt });
    }
    return lookups;
}

// The lookups whose key the program builds at run time, with their defaults.
QList<Lookup> RunTimeLookups()
{
    QList<Lookup> lookups;
    const auto add = [&lookups](const QString &section, const QString &key, std::optional<QString> english) {
        lookups.append(Lookup { u"built at run time"_s, section, key, std::move(english) });
    };
    // The mouse tool tips: the built-in "-" is a placeholder that only a
    // language file replaces, so their English text is not compared.
    for (int i = 0; i < 10; ++i)
        add(u"MainWindow"_s, u"ToolTip_Mouse"_s + QString::number(i), std::nullopt);
    for (int i = 0; i < SpecialKeyCount; ++i) {
        add(u"MainWindow"_s, QString::fromLatin1(SpecialKeyAt(i).LanguageKey),
            QString::fromLatin1(SpecialKeyAt(i).EnglishName));
    }
    for (const PhoneKeyName &key : PhoneKeyNames) {
        if (!key.LanguageKey.isEmpty())
            add(u"MainWindow"_s, key.LanguageKey.toString(), key.English.toString());
    }
    // The profile archive's messages, keyed by their number.
    const std::pair<int, const char16_t *> profileMessages[] = {
        { 1, u"No Picture is loadet !" },
        { 3, u"Creating Archive failed !" },
        { 4, u"Extracting Archive failed !" },
        { 5, u"The Archive contained no Files !" },
        { 6, u"The Profile contains no Picture !" },
        { 7, u"The Profile contains no Keymap !" },
    };
    for (const auto &[number, english] : profileMessages)
        add(u"Errors"_s, QString::number(number), QString::fromUtf16(english));
    return lookups;
}

// A language file as written: its sections in order, each with its keys and raw
// values, for the checks that need to list what is there. Values are read
// through IniFile, as the program reads them.
struct FileContents {
    QMap<QString, QMap<QString, QString>> Keys; // lower-case section -> lower-case key -> value
    QStringList Problems; // duplicates and overlong values
};

FileContents ListFile(const QString &path)
{
    FileContents contents;
    QString section;
    const QStringList lines = FromAnsi(ReadAll(path)).split("\r\n"_L1);
    for (const QString &raw : lines) {
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(u';'))
            continue;
        if (line.startsWith(u'[') && line.endsWith(u']')) {
            section = line.sliced(1, line.size() - 2).trimmed().toLower();
            if (contents.Keys.contains(section))
                contents.Problems << u"section [%1] twice"_s.arg(section);
            contents.Keys[section];
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (equals < 0 || section.isEmpty()) {
            contents.Problems << u"stray line: %1"_s.arg(line);
            continue;
        }
        const QString key = line.first(equals).trimmed().toLower();
        const QString value = line.sliced(equals + 1).trimmed();
        if (contents.Keys[section].contains(key))
            contents.Problems << u"[%1] %2 twice"_s.arg(section, key);
        if (value.size() > IniFile::MaximumValueLength)
            contents.Problems << u"[%1] %2 is %3 characters long"_s.arg(section, key).arg(value.size());
        contents.Keys[section].insert(key, value);
    }
    return contents;
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

// The access key of a menu or button text: the character after a single "&".
QList<QChar> AccessKeys(const QString &text)
{
    QList<QChar> keys;
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != u'&')
            continue;
        if (text[i + 1] != u'&')
            keys << text[i + 1].toLower();
        ++i;
    }
    return keys;
}

} // namespace

class tst_LanguageFiles : public QObject {
    Q_OBJECT

private:
    QList<Lookup> m_lookups; // the scanned calls and the run-time keys

    static void FileRows()
    {
        QTest::addColumn<QString>("file");
        for (const QString &name : LanguageFileNames)
            QTest::newRow(qPrintable(name)) << name;
    }

    static IniFile Load(const QString &name)
    {
        const auto ini = IniFile::Load(DataPath(name));
        return ini.value_or(IniFile());
    }

private slots:
    void initTestCase()
    {
        const QString sourceRoot = QStringLiteral(PADMAPPER_SOURCE_DIR) + "/src"_L1;
        QDirIterator files(sourceRoot, { u"*.cpp"_s, u"*.h"_s }, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            m_lookups += ScanSource(path, path.sliced(sourceRoot.size() + 1));
        }
        // A scan that silently finds nothing would let every check pass.
        const auto found = [this](const QString &section, const QString &key) {
            return std::any_of(m_lookups.cbegin(), m_lookups.cend(), [&](const Lookup &l) {
                return l.Section == section && l.Key == key && l.Default.has_value();
            });
        };
        QVERIFY2(m_lookups.size() > 60, qPrintable(QString::number(m_lookups.size())));
        QVERIFY(found(u"MainWindow"_s, u"Menu_File"_s)); // through a helper
        QVERIFY(found(u"Errors"_s, u"16"_s)); // direct
        QVERIFY(found(u"FileuploadWindow"_s, u"Status1"_s)); // section from a constant
        QVERIFY(found(u"Errors"_s, u"15"_s)); // default over two lines
        QVERIFY(found(u"SettingsWindow"_s, u"Frame_Speed"_s));
        m_lookups += RunTimeLookups();
        for (const QString &name : LanguageFileNames)
            QVERIFY2(QFile::exists(DataPath(name)), qPrintable(DataPath(name)));
    }

    void cleanup()
    {
        SetLanguage(QString());
        ApplyKeyNameLanguage();
    }

    void everyLookedUpKeyIsThere_data() { FileRows(); }

    void everyLookedUpKeyIsThere()
    {
        QFETCH(QString, file);
        const IniFile ini = Load(file);
        QStringList missing;
        for (const Lookup &lookup : std::as_const(m_lookups)) {
            if (ini.Value(lookup.Section, lookup.Key).isEmpty())
                missing << u"[%1] %2 (%3)"_s.arg(lookup.Section, lookup.Key, lookup.Where);
        }
        missing.removeDuplicates();
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(u'\n')));
    }

    // No duplicates, no value beyond what the reader keeps, the same keys in
    // both files, and the German texts keep the English placeholders.
    void bothFilesHaveTheSameKeysAndPlaceholders()
    {
        const FileContents english = ListFile(DataPath(u"English.lng"_s));
        const FileContents german = ListFile(DataPath(u"Deutsch.lng"_s));
        QVERIFY2(english.Problems.isEmpty(), qPrintable(english.Problems.join(u'\n')));
        QVERIFY2(german.Problems.isEmpty(), qPrintable(german.Problems.join(u'\n')));
        QCOMPARE(german.Keys.keys(), english.Keys.keys());
        const IniFile englishIni = Load(u"English.lng"_s);
        const IniFile germanIni = Load(u"Deutsch.lng"_s);
        QStringList differing;
        for (auto section = english.Keys.cbegin(); section != english.Keys.cend(); ++section) {
            QCOMPARE(german.Keys.value(section.key()).keys(), section.value().keys());
            for (const QString &key : section.value().keys()) {
                const QString en = englishIni.Value(section.key(), key);
                const QString de = germanIni.Value(section.key(), key);
                if (Placeholders(en) != Placeholders(de))
                    differing << u"[%1] %2: \"%3\" / \"%4\""_s.arg(section.key(), key, en, de);
            }
        }
        QVERIFY2(differing.isEmpty(), qPrintable(differing.join(u'\n')));
    }

    void englishRepeatsTheBuiltInTexts()
    {
        // A key that several calls share with different defaults ("10", whose one
        // text serves two messages) may carry any of them.
        QMap<std::pair<QString, QString>, QStringList> defaults;
        for (const Lookup &lookup : std::as_const(m_lookups)) {
            if (lookup.Default && !lookup.Default->isEmpty())
                defaults[{ lookup.Section, lookup.Key }] << *lookup.Default;
        }
        const IniFile english = Load(u"English.lng"_s);
        QStringList differing;
        for (auto it = defaults.cbegin(); it != defaults.cend(); ++it) {
            const QString value = english.Value(it.key().first, it.key().second);
            if (!it.value().contains(value)) {
                differing << u"[%1] %2: \"%3\", built in \"%4\""_s.arg(
                    it.key().first, it.key().second, value, it.value().join("\" / \""_L1));
            }
        }
        QVERIFY2(differing.isEmpty(), qPrintable(differing.join(u'\n')));
    }

    void accessKeysDoNotCollide_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<bool>("isMenu"); // every entry of a menu has its access key

        // The keys that share one window or menu, space-separated.
        const std::tuple<const char *, const char16_t *, const char16_t *, bool> groups[] = {
            { "File menu", u"MainWindow",
                u"Menu_Open Menu_Save Menu_SaveAs Menu_Import Menu_Export Menu_FileUpload Menu_ViewKeymap "
                u"Menu_Settings Menu_Exit",
                true },
            { "Import and Export menus", u"MainWindow", u"Menu_Picture Menu_Keymap", true },
            { "Help menu", u"MainWindow", u"Menu_Readme Menu_About", true },
            { "picture menu", u"MainWindow", u"Menu_PopUpLoad Menu_PopUpSave", true },
            { "main window", u"MainWindow", u"Menu_File Menu_Help Button_Left Button_Right", true },
            { "settings window", u"SettingsWindow",
                u"Label_Language Frame_FileTypes Frame_hid Frame_kcf Frame_PhoneConnection Frame_Port Frame_Speed "
                u"Button_OK Button_Abort",
                false },
        };
        for (const QString &file : LanguageFileNames) {
            for (const auto &[name, section, keys, isMenu] : groups) {
                QTest::addRow("%s: %s", qPrintable(file.first(file.size() - 4)), name)
                    << file << QString::fromUtf16(section) << QString::fromUtf16(keys).split(u' ') << isMenu;
            }
        }
    }

    void accessKeysDoNotCollide()
    {
        QFETCH(QString, file);
        QFETCH(QString, section);
        QFETCH(QStringList, keys);
        QFETCH(bool, isMenu);
        const IniFile ini = Load(file);
        QHash<QChar, QStringList> users;
        QStringList problems;
        for (const QString &key : keys) {
            const QString text = ini.Value(section, key);
            const QList<QChar> access = AccessKeys(text);
            if (access.size() > 1 || (isMenu && access.isEmpty()))
                problems << u"%1 \"%2\" has %3 access keys"_s.arg(key, text).arg(access.size());
            for (const QChar c : access)
                users[c] << key;
        }
        for (auto it = users.cbegin(); it != users.cend(); ++it) {
            if (it.value().size() > 1)
                problems << u"'%1' in %2"_s.arg(it.key()).arg(it.value().join(u", "_s));
        }
        QEXPECT_FAIL("English: File menu",
            "the built-in English menu gives S to Save and Send, E to Export and Exit", Continue);
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    void filesAreWindows1252WithCrLf_data() { FileRows(); }

    void filesAreWindows1252WithCrLf()
    {
        QFETCH(QString, file);
        const QByteArray bytes = ReadAll(DataPath(file));
        QVERIFY(!bytes.isEmpty());
        QVERIFY2(!bytes.startsWith("\xEF\xBB\xBF") && !bytes.startsWith("\xFF\xFE"), "byte order mark");
        QVERIFY2(bytes.startsWith(';'), "no comment line on top");
        QCOMPARE(bytes.count('\n'), bytes.count("\r\n"));
        QCOMPARE(bytes.count('\r'), bytes.count("\r\n"));
        // Every non-ASCII character must be a Windows-1252 byte, so any
        // non-ASCII byte at all makes the file invalid as UTF-8.
        const bool ascii = std::all_of(bytes.cbegin(), bytes.cend(), [](char c) { return uchar(c) < 0x80; });
        if (!ascii) {
            QStringDecoder utf8(QStringDecoder::Utf8);
            (void)QString(utf8(bytes));
            QVERIFY2(utf8.hasError(), "the file is UTF-8");
        }
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
