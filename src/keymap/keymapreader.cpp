// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymapreader.h"

#include "keymaptexts.h"
#include "keytable.h"
#include "settings/filemessage.h"
#include "support/ansitext.h"
#include "support/programpaths.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>

#include <cerrno>
#include <cmath>
#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype ActionLinePrefixLength = 15;
constexpr auto MouseButtonsPrefix = "<MOUSE BUTTONS "_L1;
constexpr auto MouseMovementPrefix = "<MOUSE MOVEMENT"_L1;
constexpr auto KeyboardPrefix = "<KEYBOARD MODIF"_L1;
constexpr auto LineEnd = "\r\n"_L1;
constexpr PhoneKey NoKey = -1;
constexpr qsizetype AlignedNameLength = 8;

// Error numbers and texts in the manner the program has always reported faults
// outside the keys.
constexpr int ErrorOutOfMemory = 7;
constexpr int ErrorFileNotFound = 53;
constexpr int ErrorPathFileAccess = 75;

const std::array<QLatin1StringView, 8> MovementWords = {
    "left"_L1, "upleft"_L1, "up"_L1, "upright"_L1, "right"_L1, "downright"_L1, "down"_L1, "downleft"_L1,
};

// The text between the n-th and the next double quote (n counted from 0), or
// "" when either is missing.
QStringView QuotedValue(QStringView line, int pairIndex)
{
    qsizetype open = -1;
    for (int i = 0; i <= pairIndex * 2; ++i) {
        open = line.indexOf(u'"', open + 1);
        if (open < 0)
            return {};
    }
    const qsizetype close = line.indexOf(u'"', open + 1);
    if (close < 0)
        return {};
    return line.sliced(open + 1, close - open - 1);
}

QString CommentOf(QStringView line)
{
    const qsizetype open = line.indexOf("<!--"_L1);
    if (open < 0)
        return {};
    const qsizetype start = open + 4;
    const qsizetype close = line.indexOf("-->"_L1, start);
    if (close < 0)
        return {};
    return TrimSpaces(line.sliced(start, close - start)).toString();
}

// A number as keymap files write it: decimal with sign, fraction and exponent
// (E or D), or &H / &O notation; blanks around it are allowed.
std::optional<double> NumericValue(QStringView text)
{
    static const QRegularExpression decimal(u"^[ \\t]*[+-]?(\\d+\\.?\\d*|\\.\\d+)([eEdD][+-]?\\d+)?[ \\t]*$"_s);
    static const QRegularExpression based(u"^[ \\t]*&([hH][0-9a-fA-F]+|[oO][0-7]+)[ \\t]*$"_s);
    if (decimal.match(text).hasMatch()) {
        QString normal = text.trimmed().toString();
        normal.replace(u'd', u'e').replace(u'D', u'e');
        bool ok = false;
        const double value = normal.toDouble(&ok);
        return ok ? std::optional<double>(value) : std::nullopt;
    }
    if (based.match(text).hasMatch()) {
        const QStringView digits = text.trimmed().sliced(2);
        const bool hex = text.trimmed()[1].toLower() == u'h';
        bool ok = false;
        const qulonglong value = digits.toULongLong(&ok, hex ? 16 : 8);
        return ok ? std::optional<double>(static_cast<double>(value))
                  : std::optional<double>(std::numeric_limits<double>::infinity());
    }
    return std::nullopt;
}

class KeymapReader
{
public:
    explicit KeymapReader(Keymap &keymap) : m_keymap(keymap) {}

    void ReadLine(QStringView rawLine);
    QString TakeErrors() { return std::move(m_errors); }

private:
    void ReadMouseButtons(QStringView line);
    void ReadMouseMovement(QStringView line);
    void ReadKeyboard(QStringView line);
    void AddError(QStringView message, QStringView value);

    Keymap &m_keymap;
    // Action lines before any key tag belong to the first key.
    PhoneKey m_current = PhoneKeys::Lsk;
    QString m_errors;
};

void KeymapReader::ReadLine(QStringView rawLine)
{
    const QStringView line = TrimSpaces(rawLine);
    if (line.size() >= ActionLinePrefixLength) {
        if (m_current == NoKey)
            return;
        const QStringView prefix = line.first(ActionLinePrefixLength);
        if (prefix.compare(MouseButtonsPrefix, Qt::CaseInsensitive) == 0)
            ReadMouseButtons(line);
        else if (prefix.compare(MouseMovementPrefix, Qt::CaseInsensitive) == 0)
            ReadMouseMovement(line);
        else if (prefix.compare(KeyboardPrefix, Qt::CaseInsensitive) == 0)
            ReadKeyboard(line);
        return;
    }
    if (line.size() <= 2)
        return;
    const QStringView name = line.sliced(1, line.size() - 2);
    const PhoneKey key = KeyIndex(name);
    if (key != NoKey)
        m_current = key;
    else if (KeyIndex(name.sliced(1)) != NoKey) // a closing tag such as </KEY_1>
        m_current = NoKey;
}

void KeymapReader::ReadMouseButtons(QStringView line)
{
    KeyAction &action = m_keymap[m_current];
    action.IsMouse = true;
    action.Comment = CommentOf(line);
    const QStringView value = QuotedValue(line, 0);
    if (value.compare("left"_L1, Qt::CaseInsensitive) == 0)
        action.MouseAction = MouseActions::ButtonLeft;
    else if (value.compare("right"_L1, Qt::CaseInsensitive) == 0)
        action.MouseAction = MouseActions::ButtonRight;
    else
        AddError(u"  -> Unbekannte Konstante f\u00fcr Mouse Buttons (", value);
}

void KeymapReader::ReadMouseMovement(QStringView line)
{
    KeyAction &action = m_keymap[m_current];
    action.IsMouse = true;
    action.Comment = CommentOf(line);
    const QStringView value = QuotedValue(line, 0);
    for (std::size_t i = 0; i < MovementWords.size(); ++i) {
        if (value.compare(MovementWords[i], Qt::CaseInsensitive) == 0) {
            action.MouseAction = MouseActions::MoveLeft + static_cast<int>(i);
            return;
        }
    }
    AddError(u"-> Unbekannte Konstante f\u00fcr Mouse Movement (", value);
}

void KeymapReader::ReadKeyboard(QStringView line)
{
    KeyAction &action = m_keymap[m_current];
    action.IsMouse = false;
    action.Comment = CommentOf(line);

    const QStringView modifier = QuotedValue(line, 0);
    if (modifier == "00"_L1) {
        action.Modifiers = 0;
    } else if (const std::optional<double> number = NumericValue(modifier)) {
        // Rounded half to even (2.5 gives 2, 3.5 gives 4); anything out of
        // range ends up as 0 and so as an invalid modifier.
        const double rounded = std::nearbyint(*number);
        int value = std::isfinite(rounded) && std::fabs(rounded) <= 32767 ? static_cast<int>(rounded) : 0;
        action.Modifiers = static_cast<std::int16_t>(FlagsToModifier(ModifierToFlags(value)));
        if (action.Modifiers == 0)
            AddError(u"-> Kein g\u00fcltiger Keyboard Modifier (", modifier);
    } else {
        AddError(u"-> Keyboard Modifier ist keine Zahl (", modifier);
    }

    const QStringView usage = QuotedValue(line, 1);
    if (usage == "00"_L1) {
        action.KeyCode = 0;
    } else {
        action.KeyCode = static_cast<std::int16_t>(UsageToKeyCode(usage));
        if (action.KeyCode == 0)
            AddError(u"-> Unbekannte UsageID (", usage);
    }
}

void KeymapReader::AddError(QStringView message, QStringView value)
{
    const QString name = KeyFileName(m_current);
    m_errors += name + u'\t';
    if (name.size() < AlignedNameLength)
        m_errors += u'\t';
    m_errors.append(message).append(value).append(u')').append(LineEnd);
}

} // namespace

std::optional<QString> ReadKeymapFile(const QString &path, KeymapReadErrors &errors)
{
    QFile file;
    FileError error;
    if (OpenForReading(file, path, &error) && file.size() > LargestKeymapSize) {
        errors = KeymapTooLarge(path);
        return std::nullopt;
    }
    const QByteArray bytes = error.Any() ? QByteArray() : file.readAll();
    if (!error.Any() && file.error() == QFileDevice::NoError)
        return FromAnsi(bytes);
    if (error.Problem == FileProblem::Missing) {
        errors.InternalErrorNumber = ErrorFileNotFound;
        errors.InternalErrorDescription = LanguageText(KeymapText::FileNotFound);
    } else {
        errors.InternalErrorNumber = ErrorPathFileAccess;
        errors.InternalErrorDescription = LanguageText(KeymapText::FileAccessError);
        errors.File = error.Any() ? error : FileError{FileProblem::Other, path, EIO};
    }
    return std::nullopt;
}

KeymapReadErrors KeymapTooLarge(const QString &path)
{
    KeymapReadErrors errors;
    errors.InternalErrorNumber = ErrorOutOfMemory;
    errors.InternalErrorDescription = LanguageText(KeymapText::OutOfMemory);
    errors.File = FileError{FileProblem::TooLarge, path, 0};
    return errors;
}

bool ReadKeymapText(Keymap &keymap, const QString &source, bool isText, KeymapReadErrors *errors)
{
    KeymapReadErrors found;
    if (isText && errors)
        found = std::move(*errors);
    keymap.ResetToPhoneDefaults();
    const QString text = isText ? source : ReadKeymapFile(source, found).value_or(QString());

    KeymapReader reader(keymap);
    const QStringView all(text);
    qsizetype start = 0;
    for (;;) {
        const qsizetype end = all.indexOf(LineEnd, start);
        reader.ReadLine(all.sliced(start, (end < 0 ? all.size() : end) - start));
        if (end < 0)
            break;
        start = end + LineEnd.size();
    }
    found.List = reader.TakeErrors();
    found.LineEndsNotCrLf = !text.contains(LineEnd) && (text.contains(u'\n') || text.contains(u'\r'));

    const bool any = found.Any();
    if (errors)
        *errors = std::move(found);
    return any;
}

QString KeymapReadSummary(const KeymapReadErrors &errors)
{
    if (!errors.List.isEmpty()) {
        QString indented = errors.List;
        indented.replace(LineEnd, "\r\n   "_L1);
        return LanguageText(KeymapText::KeysReadWrongly) + LineEnd + "   "_L1 + indented;
    }
    return FileFailureMessage(LanguageText(KeymapText::InternalError) + LineEnd
                                  + QString::number(errors.InternalErrorNumber) + u' '
                                  + errors.InternalErrorDescription,
                              errors.File);
}

QString KeymapReadNote(const KeymapReadErrors &errors)
{
    return errors.LineEndsNotCrLf ? LanguageText(KeymapText::LineEndsNotCrLf) : QString();
}

QString KeymapReadErrorTitle()
{
    return LanguageText(KeymapText::ReadErrorTitle);
}

QByteArray KeymapErrorReportText(const QString &summary, const QDateTime &now)
{
    const QLocale locale = QLocale::system();
    // The regional time format, without a time zone.
    const QString timeFormat = locale.timeFormat(QLocale::LongFormat).remove(u't').trimmed();
    const QString text = "LastReadError.txt von Padmapper"_L1 + LineEnd + LineEnd + "Programmversion:   "_L1
                         + QString::number(PADMAPPER_VERSION_MAJOR) + u'.' + QString::number(PADMAPPER_VERSION_MINOR)
                         + u'.' + QString::number(PADMAPPER_VERSION_PATCH) + LineEnd + "Zeitpunkt:         "_L1
                         + locale.toString(now.time(), timeFormat) + "   "_L1
                         + locale.toString(now.date(), QLocale::ShortFormat) + LineEnd + LineEnd + summary + LineEnd;
    return ToAnsi(text);
}

QString WriteKeymapErrorReport(const QString &summary)
{
    return WriteProgramFile(QString::fromLatin1(KeymapErrorReportName),
                            KeymapErrorReportText(summary, QDateTime::currentDateTime()));
}

QString ReportKeymapErrors(const KeymapReadErrors &errors)
{
    const QString summary = KeymapReadSummary(errors);
    const QString written = WriteKeymapErrorReport(summary);
    if (written.isEmpty()) {
        return summary + LineEnd + LanguageText(KeymapText::ReportNotWritten);
    }
    if (QFileInfo(written).path() == QCoreApplication::applicationDirPath())
        return summary;
    return summary + LineEnd + LanguageText(KeymapText::ReportWrittenTo).replace("%f"_L1, written);
}
