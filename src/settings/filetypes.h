// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The two file types the program can own: profiles (.hid) and keymaps (.kcf).
enum class FileType { Profile, Keymap };

// Binding ".hid" and ".kcf" to the program, per user and without
// administrator rights. On Windows these are the classes PMX_hidfile and
// PMX_kcffile under HKEY_CURRENT_USER\Software\Classes; elsewhere a desktop
// entry, shared-mime-info types for the two extensions and the default
// application of those types in mimeapps.list, all below the user's XDG
// folders.
class FileTypes
{
public:
    // The user's folders (XDG_DATA_HOME, XDG_CONFIG_HOME) and the program to
    // open files with; empty folders mean the standard ones.
    FileTypes(const QString &programPath, const QString &dataHome = {}, const QString &configHome = {});

    // The class a type is bound to while the program owns it: "PMX_hidfile" /
    // "PMX_kcffile" on Windows, "io.github.padmapper.Padmapper.desktop" elsewhere.
    QString OwnClass(FileType type) const;

    // Writes the program's own classes (open command and icon; elsewhere the
    // desktop entry and the MIME types), without binding any type. Runs each
    // time the settings window opens, so a moved program is found again.
    void RegisterFileTypes();

    // The class a type is bound to now, "" when none.
    QString BoundClass(FileType type) const;
    // Binds a type to a class; "" unbinds it.
    void Bind(FileType type, const QString &className);

    QString MimeType(FileType type) const;
    QString DesktopEntryPath() const;
    QString MimePackagePath() const;
    QString MimeAppsListPath() const;

private:
    QString m_programPath;
    QString m_dataHome;
    QString m_configHome;
};
