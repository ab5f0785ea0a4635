// SPDX-License-Identifier: GPL-3.0-or-later
#include "uploadwindow.h"

#include "editordialogs.h"
#include "editortexts.h"
#include "phone/phonetexts.h"
#include "phone/uploadsignalguard.h"
#include "profile/document.h"
#include "profile/profiletexts.h"
#include "profile/tempfiles.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// Room for a status line such as "Game.hid (12.34 KB) successfully transfered
// to phone !" without wrapping.
constexpr int StatusWidthInChars = 58;

} // namespace

UploadWindow::UploadWindow(UploadRequest request, std::function<QString()> writeProfileCopy, EditorDialogs &dialogs,
                           QWidget *parent, UploadJobMaker makeJob)
    : QDialog(parent), m_dialogs(dialogs), m_request(std::move(request)),
      m_writeProfileCopy(std::move(writeProfileCopy)), m_makeJob(std::move(makeJob))
{
    setModal(true);
    setWindowTitle(LanguageText(PhoneText::UploadCaption));

    m_status = new QLabel(LanguageText(PhoneText::Generating), this);
    m_status->setWordWrap(true);
    m_status->setMinimumWidth(fontMetrics().averageCharWidth() * StatusWidthInChars);
    m_progress = new QProgressBar(this);
    m_progress->setRange(0, 100);
    m_progress->setValue(0);
    m_abortButton = new QPushButton(LanguageText(EditorText::UploadAbort), this);
    m_okButton = new QPushButton(LanguageText(EditorText::UploadOk), this);
    m_okButton->setEnabled(false);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_abortButton);
    buttons->addWidget(m_okButton);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(10);
    layout->addWidget(m_status);
    layout->addWidget(m_progress);
    layout->addSpacing(4);
    layout->addLayout(buttons);

    connect(m_abortButton, &QPushButton::clicked, this, &UploadWindow::AbortTransfer);
    connect(m_okButton, &QPushButton::clicked, this, &QDialog::accept);
}

UploadWindow::~UploadWindow() = default;

void UploadWindow::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_started)
        return;
    m_started = true;
    m_running = true;
    m_abortButton->setFocus();
    // Let the window appear before the copy is written.
    QTimer::singleShot(0, this, &UploadWindow::StartTransfer);
}

void UploadWindow::StartTransfer()
{
    // Writing the copy may raise messages of the document's own (such as a
    // missing picture); an empty path then ends the upload as a failed copy.
    // The job only ever sees the finished copy: the document belongs to this
    // thread.
    if (m_request.HasConnection() && !m_abortRequested && m_writeProfileCopy)
        m_request.ProfilePath = m_writeProfileCopy();
    m_request.OwnsProfile = true;
    m_job = m_makeJob(m_request);
    if (m_abortRequested)
        m_job->Abort();
    connect(m_job.get(), &UploadJob::StatusChanged, this, &UploadWindow::ShowStatus);
    connect(m_job.get(), &UploadJob::ProgressChanged, this, &UploadWindow::ShowProgress);
    connect(m_job.get(), &UploadJob::Finished, this, &UploadWindow::TransferEnded);
    m_signals = std::make_unique<UploadSignalGuard>(*m_job, DeleteTempFilesFromSignalHandler);
    connect(m_signals.get(), &UploadSignalGuard::Arrived, this, &UploadWindow::AbortTransfer);
    m_job->Start();
}

void UploadWindow::AbortTransfer()
{
    if (!m_running)
        return;
    m_abortRequested = true;
    if (m_job)
        m_job->Abort();
    m_abortButton->setEnabled(false);
}

void UploadWindow::done(int result)
{
    if (m_running) {
        AbortTransfer();
        return;
    }
    QDialog::done(result);
}

void UploadWindow::ShowProgress(qint64 bytesSent, qint64 total, qint32 /*rate*/, const QString &text)
{
    const int percent = UploadJob::Percent(bytesSent, total);
    setWindowTitle(UploadJob::ProgressCaption(percent));
    m_progress->setValue(percent);
    ShowStatus(text);
}

void UploadWindow::ShowStatus(const QString &text)
{
    m_status->setText(text);
    // A text of another language or with a long file name wraps onto more
    // lines than the first one had: the window grows rather than cut it.
    layout()->activate();
    const int needed = heightForWidth(width());
    if (needed > height())
        resize(width(), needed);
}

void UploadWindow::TransferEnded(UploadResult result)
{
    m_result = result;
    m_running = false;
    m_endedBySignal = m_signals->Received();
    m_signals.reset();

    // After a signal the program is ending: no message, no waiting for OK,
    // even when the last piece was through before the signal came.
    switch (m_endedBySignal != 0 ? UploadResult::Aborted : m_result) {
    case UploadResult::Aborted:
        QDialog::done(QDialog::Rejected);
        return;
    case UploadResult::Failed:
        m_dialogs.ShowMessage(this, DocumentMessage{m_job->ErrorText(), LanguageText(ProfileText::ErrorTitle),
                                                    DocumentMessage::Icon::Critical});
        QDialog::done(QDialog::Rejected);
        return;
    case UploadResult::Succeeded:
        m_abortButton->setEnabled(false);
        m_okButton->setEnabled(true);
        m_okButton->setDefault(true);
        m_okButton->setFocus();
        return;
    }
}
