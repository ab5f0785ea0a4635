// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QLabel;

// The program's name, version and licence, with a link to the licence text.
class AboutDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AboutDialog(QWidget *parent = nullptr);

    // "Version:   " and the version from the build.
    static QString VersionText();
    QLabel *LinkLabel() const { return m_link; }

private:
    QLabel *m_link = nullptr;
};
