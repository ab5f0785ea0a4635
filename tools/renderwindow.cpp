// SPDX-License-Identifier: GPL-3.0-or-later
// Renders the main window and its phone keypad to PNG files, offscreen: for
// screenshots, and for checking the layout in other languages, palettes and
// scales without a display.
#include "editor/editordialogs.h"
#include "editor/mainwindow.h"
#include "editor/phonekeypad.h"
#include "keymap/keymap.h"
#include "profile/document.h"
#include "profile/tempfiles.h"
#include "settings/settingsstore.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

// Start-up meets no dialog: a message goes to standard error, and the port
// stays unset.
class QuietDialogs : public EditorDialogs
{
public:
    void ShowMessage(QWidget *, const DocumentMessage &message) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(message.Text));
    }
    Answer AskYesNoCancel(QWidget *, const QString &, const QString &) override { return Answer::No; }
    QString OpenFileName(QWidget *, const QString &, const QString &, const QString &) override { return {}; }
    ChosenFile SaveFileName(QWidget *, const QString &, const QString &, const QString &) override { return {}; }
    bool ConfigurePort(QWidget *) override { return false; }
    bool SetUpPrinter(QWidget *, QPrinter &, const QString &) override { return false; }
};

// The widget as drawn at that device pixel ratio.
QImage Render(QWidget &widget, qreal scale)
{
    QImage image(widget.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    widget.render(&image);
    return image;
}

[[noreturn]] void Fail(const QString &text)
{
    std::fprintf(stderr, "renderwindow: %s\n", qPrintable(text));
    std::exit(2);
}

} // namespace

int main(int argc, char *argv[])
{
    // The same pixels with or without a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"renderwindow"_s);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Renders the Padmapper window and its phone keypad to PNG files named "
        "mainwindow-LANGUAGE-PALETTE-SCALEx.png and keypad-LANGUAGE-PALETTE-SCALEx.png."_s);
    parser.addHelpOption();
    const QCommandLineOption language({u"l"_s, u"language"_s}, u"Language file (.lng); English without."_s, u"file"_s);
    const QCommandLineOption scales({u"s"_s, u"scale"_s}, u"Device pixel ratios, comma-separated."_s, u"list"_s,
                                    u"1,2"_s);
    const QCommandLineOption palettes({u"p"_s, u"palette"_s}, u"Palettes, comma-separated: light, dark."_s, u"list"_s,
                                      u"light,dark"_s);
    const QCommandLineOption size(u"size"_s,
                                  u"Window size in pixels, WIDTHxHEIGHT (default: its own size, at "
                                  "least 760x560)."_s,
                                  u"size"_s);
    const QCommandLineOption key(u"key"_s, u"The phone key to select, 0 to 21 (4 is joystick up)."_s, u"index"_s,
                                 u"4"_s);
    const QCommandLineOption output({u"o"_s, u"output"_s}, u"Folder for the PNG files."_s, u"folder"_s, u"."_s);
    parser.addOptions({language, scales, palettes, size, key, output});
    parser.addPositionalArgument(u"file"_s, u"A profile or keymap to show instead of the default profile."_s,
                                 u"[file]"_s);
    parser.process(app);

    QList<qreal> ratios;
    for (const QString &text : parser.value(scales).split(u',')) {
        bool ok = false;
        const qreal ratio = text.toDouble(&ok);
        if (!ok || ratio <= 0 || ratio > 8)
            Fail(u"not a scale: %1"_s.arg(text));
        ratios << ratio;
    }
    QList<std::pair<QString, QPalette>> looks;
    for (const QString &name : parser.value(palettes).split(u',')) {
        if (name == "light"_L1)
            looks.append({name, QApplication::palette()});
        else if (name == "dark"_L1) // light text on dark bases, derived from the window colour
            looks.append({name, QPalette(QColor(52, 55, 60), QColor(40, 42, 46))});
        else
            Fail(u"not a palette: %1"_s.arg(name));
    }
    QSize windowSize;
    if (parser.isSet(size)) {
        const QStringList parts = parser.value(size).split(u'x');
        windowSize = parts.size() == 2 ? QSize(parts[0].toInt(), parts[1].toInt()) : QSize();
        if (windowSize.width() <= 0 || windowSize.height() <= 0)
            Fail(u"not a size: %1"_s.arg(parser.value(size)));
    }
    bool keyOk = false;
    const int selected = parser.value(key).toInt(&keyOk);
    if (!keyOk || selected < 0 || selected >= PhoneKeys::Count)
        Fail(u"not a phone key: %1"_s.arg(parser.value(key)));
    const QDir folder(parser.value(output));
    if (!QDir().mkpath(folder.path()))
        Fail(u"cannot make the folder %1"_s.arg(folder.path()));

    // Settings of its own, so that the user's are neither read nor changed.
    QTemporaryDir settingsFolder;
    SettingsStore store(settingsFolder.filePath(u"settings.ini"_s));
    QString languageName = u"english"_s;
    if (parser.isSet(language)) {
        const QFileInfo file(parser.value(language));
        if (!file.isFile())
            Fail(u"no language file %1"_s.arg(file.filePath()));
        store.WriteLanguage(file.absoluteFilePath());
        languageName = file.completeBaseName().toLower();
    }
    if (!store.Sync())
        Fail(u"cannot write the settings to %1"_s.arg(settingsFolder.path()));
    QStringList arguments;
    if (!parser.positionalArguments().isEmpty())
        arguments << u'"' + parser.positionalArguments().constFirst() + u'"';

    QuietDialogs dialogs;
    int status = 0;
    for (const auto &[paletteName, palette] : std::as_const(looks)) {
        QApplication::setPalette(palette);
        MainWindow window(dialogs, store);
        window.Startup(arguments);
        window.resize(windowSize.isValid() ? windowSize : window.sizeHint().expandedTo(QSize(760, 560)));
        // After the activation, which focuses key "1", as a user's click does.
        QCoreApplication::processEvents();
        window.Keypad()->CMD(selected)->setFocus(Qt::MouseFocusReason);
        QCoreApplication::processEvents();
        for (const qreal ratio : std::as_const(ratios)) {
            const QString suffix = u"-%1-%2-%3x.png"_s.arg(languageName, paletteName).arg(ratio);
            for (const auto &[name, widget] : {std::pair<QString, QWidget *>(u"mainwindow"_s, &window),
                                               std::pair<QString, QWidget *>(u"keypad"_s, window.Keypad())}) {
                const QString path = folder.filePath(name + suffix);
                if (Render(*widget, ratio).save(path)) {
                    std::printf("%s\n", qPrintable(QDir::toNativeSeparators(path)));
                } else {
                    std::fprintf(stderr, "renderwindow: cannot write %s\n", qPrintable(path));
                    status = 1;
                }
            }
        }
    }
    DeleteTempFiles();
    return status;
}
