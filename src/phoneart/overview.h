// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keymap.h"
#include "support/nativefile.h"

#include <QByteArray>
#include <QImage>
#include <QPageLayout>
#include <QRectF>
#include <QString>

#include <array>
#include <optional>

class QPainter;

// The printable overview of a profile: the phone as the editor draws it with
// the profile's picture on its screen, and beside each key what it does.

// What is written beside one key.
struct OverviewLabel
{
    QString KeyName; // as the key frame names the key
    QString Action; // the key button's tool tip, without its padding
    QString Comment;
};

// Everything the overview shows, worded in the active language.
struct Overview
{
    QString Title;
    QImage Picture;
    std::array<QString, PhoneKeys::Count> Captions; // the words on the caps
    std::array<OverviewLabel, PhoneKeys::Count> Labels;
};
Overview MakeOverview(const QString &title, const Keymap &keymap, const QImage &picture);

// Draws the overview into area, in the painter's coordinates: the title at the
// top, the phone in the middle, the labels in a column on either side joined
// to their keys by leader lines. Sizes follow the area's width; the labels'
// font shrinks until both columns fit the area's height.
void PaintOverview(QPainter &painter, const QRectF &area, const Overview &overview);

// The files the overview is written as, by the extension of their name.
enum class OverviewFormat { Png, Pdf };
std::optional<OverviewFormat> OverviewFormatOf(const QString &path);

// The page the overview is made for: A4 portrait with margins of 15 mm.
QPageLayout OverviewPageLayout();
// The overview as one page (A4 portrait with margins unless given): a PDF whose texts stay
// text, or a PNG at twice the resolution of a screen's 96 dpi.
QByteArray OverviewFile(const Overview &overview, OverviewFormat format,
                        const QPageLayout &page = OverviewPageLayout());
// Writes OverviewFile in the format the path's extension names; the file is
// complete or absent. False with *error set when it could not be written, or
// (FileProblem::Other) when the extension names no format.
[[nodiscard]] bool WriteOverview(const QString &path, const Overview &overview, FileError *error = nullptr);
