// SPDX-License-Identifier: GPL-3.0-or-later
#include "overviewcommands.h"

#include "editordialogs.h"
#include "editortexts.h"
#include "filenamedialogs.h"
#include "phoneart/overview.h"
#include "profile/document.h"
#include "support/nativefile.h"

#include <QPainter>
#include <QPrinter>

namespace {

Overview DocumentOverview(const Document &document)
{
    return MakeOverview(document.DisplayName(), document.CurrentKeymap(), document.Picture().Image);
}

void ShowWriteFailed(EditorDialogs &dialogs, QWidget *parent, const FileError &cause)
{
    dialogs.ShowMessage(parent, DocumentMessage{ProfileMessageText(ProfileMessage::CreatingFileFailed, cause),
                                                ProfileMessageTitle(ProfileMessage::CreatingFileFailed),
                                                DocumentMessage::Icon::Critical});
}

} // namespace

void PrintOverview(const Document &document, EditorDialogs &dialogs, QWidget *parent)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageLayout(OverviewPageLayout());
    printer.setDocName(document.DisplayName());
    if (!dialogs.SetUpPrinter(parent, printer, LanguageText(EditorText::PrintCaption)))
        return;
    if (printer.outputFormat() == QPrinter::PdfFormat && !printer.outputFileName().isEmpty()) {
        // Printed to a file: Qt's printer writes the file as it goes and says
        // nothing when the disk fills up, so the page is made in memory and
        // the file written whole, as an export is.
        FileError error;
        const QByteArray bytes = OverviewFile(DocumentOverview(document), OverviewFormat::Pdf, printer.pageLayout());
        if (!WriteWholeFile(printer.outputFileName(), bytes, &error))
            ShowWriteFailed(dialogs, parent, error);
        return;
    }
    QPainter painter;
    if (!painter.begin(&printer)) {
        // Printing to a file that cannot be made; a printer names its own faults.
        ShowWriteFailed(dialogs, parent, FileError{FileProblem::Other, printer.outputFileName(), 0});
        return;
    }
    // The page the user chose in the dialog, within its margins.
    const QRectF page(QPointF(0, 0), printer.pageLayout().paintRectPixels(printer.resolution()).size());
    PaintOverview(painter, page, DocumentOverview(document));
    painter.end();
}

void ExportOverview(const Document &document, FileNameDialogs &fileNames, EditorDialogs &dialogs, QWidget *parent)
{
    const QString path = fileNames.OverviewToExport(document.DisplayName());
    if (path.isEmpty())
        return;
    FileError error;
    if (!WriteOverview(path, DocumentOverview(document), &error))
        ShowWriteFailed(dialogs, parent, error);
}
