// SPDX-License-Identifier: GPL-3.0-or-later
#include "overviewcommands.h"

#include "editordialogs.h"
#include "editortexts.h"
#include "filenamedialogs.h"
#include "phoneart/overview.h"
#include "profile/document.h"

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
