// SPDX-License-Identifier: GPL-3.0-or-later
#include "phoneart/overview.h"

#include "keymap/keyactiontext.h"
#include "phoneart/keyface.h"
#include "phoneart/phonegeometry.h"
#include "profile/picture.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPageLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPdfWriter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// The phone is laid out at this many pixels to the design unit, then scaled
// into place: fine enough that the whole pixels of the layout do not show.
constexpr qreal PhoneLayoutScale = 10;
// The phone's art is drawn as a picture at most this many pixels wide: about
// 300 dpi on the page, sharp on paper and small in a PDF.
constexpr qreal MostPhonePixels = 1100;
// The phone's width and the labels' font size as parts of the area's width.
constexpr qreal PhoneShare = 0.44;
constexpr qreal LabelFontShare = 1.0 / 60;
// Long labels shrink the font down to this part of its size, then are cut.
constexpr qreal SmallestFontFactor = 0.6;
constexpr int MostLinesPerParagraph = 3;

// Colours that print well and read on paper and on the dark phone alike.
const QColor TextInk(0x1b, 0x20, 0x26);
const QColor NameInk(0x5a, 0x64, 0x70);
const QColor LeaderInk(0x1d, 0x66, 0xc4);

// A font whose advances are the same on every device, so that a page is laid
// out alike on screen, in a picture and on paper. A trace of letter spacing
// turns off ligatures: a PDF's "fi" drawn as one glyph is not found by a search
// for "field".
QFont OverviewFont(qreal pixels, int weight = QFont::Normal, bool italic = false)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, qRound(pixels)));
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.02);
    font.setWeight(static_cast<QFont::Weight>(weight));
    font.setItalic(italic);
    return font;
}

// One paragraph wrapped to width, cut after MostLinesPerParagraph lines with
// an ellipsis.
std::unique_ptr<QTextLayout> WrapParagraph(const QString &text, const QFont &font,
                                           const QList<QTextLayout::FormatRange> &formats, qreal width,
                                           Qt::Alignment alignment)
{
    auto layout = std::make_unique<QTextLayout>(text, font);
    layout->setFormats(formats);
    QTextOption option(alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->beginLayout();
    qreal y = 0;
    for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
        line.setLineWidth(width);
        line.setPosition(QPointF(0, y));
        y += line.height();
    }
    layout->endLayout();
    if (layout->lineCount() <= MostLinesPerParagraph)
        return layout;
    const int cut = layout->lineAt(MostLinesPerParagraph - 1).textStart();
    const QString shortened = text.left(cut)
                              + QFontMetricsF(font).elidedText(text.mid(cut), Qt::ElideRight, width * 0.98);
    return WrapParagraph(shortened, font, formats, width, alignment);
}

// One key's label laid out in its column.
struct LabelBlock
{
    PhoneKey Key = 0;
    QPointF Anchor; // the point on the key its leader line ends at
    bool LeftColumn = true;
    std::vector<std::unique_ptr<QTextLayout>> Paragraphs;
    qreal Height = 0;
    qreal Top = 0;
    qreal AttachY = 0; // the middle of the first line, from the top
};

void LayOutLabel(LabelBlock &block, const OverviewLabel &label, qreal fontPixels, qreal width)
{
    const Qt::Alignment alignment = block.LeftColumn ? Qt::AlignRight : Qt::AlignLeft;
    // The key's name in a quieter ink, then what the key does.
    const QString first = label.KeyName + u"  "_s + label.Action;
    QTextCharFormat name;
    name.setForeground(NameInk);
    name.setFontWeight(QFont::Normal);
    QList<QTextLayout::FormatRange> formats{{0, static_cast<int>(label.KeyName.size()), name}};
    block.Paragraphs.clear();
    block.Paragraphs.push_back(WrapParagraph(first, OverviewFont(fontPixels, QFont::DemiBold), formats, width,
                                             alignment));
    if (!label.Comment.isEmpty())
        block.Paragraphs.push_back(WrapParagraph(label.Comment, OverviewFont(fontPixels * 0.92, QFont::Normal, true),
                                                 {}, width, alignment));
    block.Height = 0;
    for (const auto &paragraph : block.Paragraphs)
        block.Height += paragraph->boundingRect().height();
    const QTextLine firstLine = block.Paragraphs.front()->lineAt(0);
    block.AttachY = firstLine.y() + firstLine.height() / 2;
}

// Places the labels of a column from top to bottom, each as near the height of
// its key as the others allow, none overlapping; false when they do not fit.
bool PlaceColumn(std::vector<LabelBlock *> &column, qreal top, qreal bottom, qreal gap)
{
    std::sort(column.begin(), column.end(),
              [](const LabelBlock *a, const LabelBlock *b) { return a->Anchor.y() < b->Anchor.y(); });
    qreal total = 0;
    for (const LabelBlock *block : column)
        total += block->Height + gap;
    if (total - gap > bottom - top)
        return false;
    qreal next = top;
    for (LabelBlock *block : column) {
        block->Top = std::max(block->Anchor.y() - block->AttachY, next);
        next = block->Top + block->Height + gap;
    }
    qreal limit = bottom;
    for (auto it = column.rbegin(); it != column.rend(); ++it) {
        (*it)->Top = std::min((*it)->Top, limit - (*it)->Height);
        limit = (*it)->Top - gap;
    }
    return true;
}

void PaintPhone(QPainter &painter, const QRectF &target, const Overview &overview)
{
    const QSize designPixels = (PhoneDesignSize() * PhoneLayoutScale).toSize();
    const PhoneLayout layout = LayOutPhone(designPixels);
    // A light window behind the phone: paper.
    const QPalette palette{QColor(Qt::white)};
    // The body, the picture and the caps are drawn into a picture first: their
    // sheen and reflections are gradients that fade out, which a PDF (and so a
    // printer) would fill solid. The words on the keys stay text.
    const qreal devicePixels = target.width() * std::sqrt(std::abs(painter.deviceTransform().determinant()));
    const qreal artScale = std::min(devicePixels, MostPhonePixels) / designPixels.width();
    QImage art((QSizeF(designPixels) * artScale).toSize(), QImage::Format_RGB32);
    art.fill(Qt::white);
    QPainter artPainter(&art);
    artPainter.setRenderHint(QPainter::Antialiasing);
    artPainter.setRenderHint(QPainter::SmoothPixmapTransform);
    artPainter.scale(artScale, artScale);
    PaintPhoneBody(artPainter, layout.Art, palette);
    if (!overview.Picture.isNull()) {
        int width = overview.Picture.width();
        int height = overview.Picture.height();
        const QRect shown = FitRect(layout.Display.width(), layout.Display.height(), width, height, false)
                                .translated(layout.Display.topLeft());
        artPainter.drawImage(QRectF(shown), overview.Picture);
        artPainter.fillRect(shown, GlassGloss(layout.Art.Glass));
    }
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        const PhoneLayout::Key &placed = layout.Keys.at(static_cast<std::size_t>(key));
        artPainter.save();
        artPainter.translate(placed.Geometry.topLeft());
        PaintKeyCap(artPainter, placed.Face, KeyCapStyleOf(key), KeyCapState{}, palette, layout.Art.Unit);
        artPainter.restore();
    }
    artPainter.end();

    painter.save();
    painter.translate(target.topLeft());
    painter.scale(target.width() / designPixels.width(), target.height() / designPixels.height());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(QPointF(0, 0), QSizeF(designPixels)), art);
    const qreal fontPixels = 100;
    const QFont font = OverviewFont(fontPixels);
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        const PhoneLayout::Key &placed = layout.Keys.at(static_cast<std::size_t>(key));
        painter.save();
        painter.translate(placed.Geometry.topLeft());
        PaintKeyFace(painter, key, placed.Content, layout.Art.Unit, KeyCapState{}, palette,
                     KeyFaceText{overview.Captions.at(static_cast<std::size_t>(key)), font, fontPixels, false});
        painter.restore();
    }
    painter.restore();
}

// The part of each key that holds its caption or symbol, in the coordinates of
// the phone's target.
std::array<QRectF, PhoneKeys::Count> KeyContents(const QRectF &target)
{
    const QSize designPixels = (PhoneDesignSize() * PhoneLayoutScale).toSize();
    const PhoneLayout layout = LayOutPhone(designPixels);
    const qreal scale = target.width() / designPixels.width();
    std::array<QRectF, PhoneKeys::Count> contents;
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        const PhoneLayout::Key &placed = layout.Keys.at(static_cast<std::size_t>(key));
        const QRectF content = placed.Content.translated(placed.Geometry.topLeft());
        contents.at(static_cast<std::size_t>(key)) = QRectF(target.topLeft() + content.topLeft() * scale,
                                                            content.size() * scale);
    }
    return contents;
}

} // namespace

Overview MakeOverview(const QString &title, const Keymap &keymap, const QImage &picture)
{
    Overview overview;
    overview.Title = title;
    overview.Picture = picture;
    const KeyActionTexts texts = KeyActionTexts::Load();
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        const auto index = static_cast<std::size_t>(key);
        const PhoneKeyName &name = PhoneKeyNames.at(index);
        if (!name.ShowsSymbol)
            overview.Captions.at(index) = LanguageText(name.Name);
        // The tool tip is padded with a space on either side for the window only.
        const QString tip = KeyActionToolTip(keymap[key], texts);
        overview.Labels.at(index) = {PhoneKeyDisplayName(key), tip.mid(1, tip.size() - 2),
                                     keymap[key].Comment.trimmed()};
    }
    return overview;
}

void PaintOverview(QPainter &painter, const QRectF &area, const Overview &overview)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const qreal base = area.width() * LabelFontShare;

    // The title, as the window's caption names the document, over a rule.
    const QFont titleFont = OverviewFont(2.2 * base, QFont::Bold);
    const QFontMetricsF titleMetrics(titleFont);
    painter.setFont(titleFont);
    painter.setPen(TextInk);
    painter.drawText(QPointF(area.left(), area.top() + titleMetrics.ascent()),
                     titleMetrics.elidedText(overview.Title, Qt::ElideRight, area.width()));
    const qreal ruleY = area.top() + titleMetrics.height() + 0.4 * base;
    painter.setPen(QPen(NameInk, 0.08 * base));
    painter.drawLine(QPointF(area.left(), ruleY), QPointF(area.right(), ruleY));
    const QRectF body(area.left(), ruleY + 1.5 * base, area.width(), area.bottom() - ruleY - 1.5 * base);

    // The phone in the middle, as large as its share of the width allows.
    const QSizeF design = PhoneDesignSize();
    QSizeF phoneSize(area.width() * PhoneShare, area.width() * PhoneShare * design.height() / design.width());
    if (phoneSize.height() > body.height())
        phoneSize.scale(phoneSize.width(), body.height(), Qt::KeepAspectRatio);
    const QRectF phone(body.center().x() - phoneSize.width() / 2, body.top(), phoneSize.width(), phoneSize.height());
    PaintPhone(painter, phone, overview);

    // The keys left of the middle take the left column, those right of it the
    // right one; those in the middle go to the column with fewer so far, from
    // the top down, so the two come out even.
    const std::array<QRectF, PhoneKeys::Count> contents = KeyContents(phone);
    std::array<LabelBlock, PhoneKeys::Count> blocks;
    int leftCount = 0;
    int rightCount = 0;
    const qreal middle = phone.center().x();
    const qreal tolerance = phone.width() * 0.02;
    std::vector<PhoneKey> inMiddle;
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        LabelBlock &block = blocks.at(static_cast<std::size_t>(key));
        block.Key = key;
        block.Anchor = contents.at(static_cast<std::size_t>(key)).center();
        if (std::abs(block.Anchor.x() - middle) <= tolerance)
            inMiddle.push_back(key);
        else if ((block.LeftColumn = block.Anchor.x() < middle))
            ++leftCount;
        else
            ++rightCount;
    }
    std::sort(inMiddle.begin(), inMiddle.end(), [&](PhoneKey a, PhoneKey b) {
        return contents.at(static_cast<std::size_t>(a)).y() < contents.at(static_cast<std::size_t>(b)).y();
    });
    for (const PhoneKey key : inMiddle) {
        const bool left = leftCount <= rightCount;
        blocks.at(static_cast<std::size_t>(key)).LeftColumn = left;
        ++(left ? leftCount : rightCount);
    }
    // A leader line ends in the key's edge on the side of its label, clear of
    // the caption and of most of the keys between.
    for (LabelBlock &block : blocks) {
        const QRectF &content = contents.at(static_cast<std::size_t>(block.Key));
        const qreal inset = 0.12 * content.width();
        block.Anchor.setX(block.LeftColumn ? content.left() + inset : content.right() - inset);
    }

    const qreal gutter = 1.2 * base;
    const qreal columnWidth = (area.width() - phone.width()) / 2 - gutter;
    qreal factor = 1;
    qreal gap = 0;
    for (;; factor *= 0.92) {
        const bool last = factor * 0.92 < SmallestFontFactor;
        std::vector<LabelBlock *> left;
        std::vector<LabelBlock *> right;
        for (LabelBlock &block : blocks) {
            LayOutLabel(block, overview.Labels.at(static_cast<std::size_t>(block.Key)), base * factor, columnWidth);
            (block.LeftColumn ? left : right).push_back(&block);
        }
        gap = 0.55 * base * factor;
        const bool leftFits = PlaceColumn(left, body.top(), body.bottom(), gap);
        if ((PlaceColumn(right, body.top(), body.bottom(), gap) && leftFits) || last)
            break;
    }

    // Leader lines first, so that no line runs over a label. A light edge
    // keeps them visible where they cross the dark phone.
    const qreal lineWidth = 0.075 * base;
    const qreal stub = 0.6 * base;
    for (const LabelBlock &block : blocks) {
        const qreal x = block.LeftColumn ? area.left() + columnWidth + 0.3 * base
                                         : area.right() - columnWidth - 0.3 * base;
        const qreal y = block.Top + block.AttachY;
        QPainterPath leader(QPointF(x, y));
        leader.lineTo(QPointF(x + (block.LeftColumn ? stub : -stub), y));
        leader.lineTo(block.Anchor);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(255, 255, 255, 200), 3 * lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(leader);
        painter.setPen(QPen(LeaderInk, lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(leader);
        painter.setPen(QPen(Qt::white, lineWidth));
        painter.setBrush(LeaderInk);
        painter.drawEllipse(block.Anchor, 0.28 * base, 0.28 * base);
    }

    painter.setPen(TextInk);
    for (const LabelBlock &block : blocks) {
        const qreal x = block.LeftColumn ? area.left() : area.right() - columnWidth;
        qreal y = block.Top;
        for (const auto &paragraph : block.Paragraphs) {
            paragraph->draw(&painter, QPointF(x, y));
            y += paragraph->boundingRect().height();
        }
    }
    painter.restore();
}

std::optional<OverviewFormat> OverviewFormatOf(const QString &path)
{
    if (path.endsWith(".png"_L1, Qt::CaseInsensitive))
        return OverviewFormat::Png;
    if (path.endsWith(".pdf"_L1, Qt::CaseInsensitive))
        return OverviewFormat::Pdf;
    return std::nullopt;
}

QPageLayout OverviewPageLayout()
{
    return QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(15, 15, 15, 15),
                       QPageLayout::Millimeter);
}

QByteArray OverviewFile(const Overview &overview, OverviewFormat format, const QPageLayout &page)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly))
        return {};
    if (format == OverviewFormat::Pdf) {
        QPdfWriter writer(&buffer);
        writer.setPageLayout(page);
        writer.setTitle(overview.Title);
        writer.setCreator(u"Padmapper"_s);
        QPainter painter(&writer);
        PaintOverview(painter, QRectF(QPointF(0, 0), page.paintRectPixels(writer.resolution()).size()), overview);
        painter.end();
        return bytes;
    }
    // Twice the pixels of a screen, and a resolution that prints it at A4.
    constexpr int ScreenDpi = 96;
    constexpr int Ratio = 2;
    QImage image(page.fullRectPixels(ScreenDpi).size() * Ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(Ratio);
    image.setDotsPerMeterX(qRound(ScreenDpi * Ratio / 0.0254));
    image.setDotsPerMeterY(image.dotsPerMeterX());
    image.fill(Qt::white);
    QPainter painter(&image);
    PaintOverview(painter, QRectF(page.paintRectPixels(ScreenDpi)), overview);
    painter.end();
    return image.save(&buffer, "PNG") ? bytes : QByteArray();
}

bool WriteOverview(const QString &path, const Overview &overview, FileError *error)
{
    const std::optional<OverviewFormat> format = OverviewFormatOf(path);
    const QByteArray bytes = format ? OverviewFile(overview, *format) : QByteArray();
    if (bytes.isEmpty()) {
        if (error)
            *error = {FileProblem::Other, path, 0};
        return false;
    }
    return WriteWholeFile(path, bytes, error);
}
