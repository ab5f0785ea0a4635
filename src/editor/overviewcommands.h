// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class Document;
class EditorDialogs;
class FileNameDialogs;
class QWidget;

// File > Print: the document's overview on the printer the print dialog sets
// up, one page.
void PrintOverview(const Document &document, EditorDialogs &dialogs, QWidget *parent);
// File > Export > Overview: the document's overview as the PDF or PNG file the
// save dialog names. The document stays as it is.
void ExportOverview(const Document &document, FileNameDialogs &fileNames, EditorDialogs &dialogs, QWidget *parent);
