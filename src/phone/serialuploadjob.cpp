// SPDX-License-Identifier: GPL-3.0-or-later
#include "serialuploadjob.h"

#include <QThread>

using namespace Qt::StringLiterals;

SerialUploadJob::SerialUploadJob(UploadRequest request, QObject *parent)
    : UploadJob(parent), m_upload(std::move(request))
{
    // The upload reports from its worker; this job's own thread takes it.
    connect(&m_upload, &ProfileUpload::StatusChanged, this, &UploadJob::StatusChanged, Qt::QueuedConnection);
    connect(&m_upload, &ProfileUpload::ProgressChanged, this, &UploadJob::ProgressChanged, Qt::QueuedConnection);
}

SerialUploadJob::~SerialUploadJob()
{
    if (m_worker && m_worker->isRunning()) {
        m_upload.Abort();
        m_worker->wait();
    }
}

void SerialUploadJob::Start()
{
    m_worker.reset(QThread::create([this] { m_result = m_upload.Run(); }));
    m_worker->setObjectName(u"upload"_s);
    // Queued behind the last report of the worker, so Finished comes last.
    connect(m_worker.get(), &QThread::finished, this, &SerialUploadJob::Ended, Qt::QueuedConnection);
    m_worker->start();
}

void SerialUploadJob::Abort()
{
    if (!m_ended)
        m_upload.Abort();
}

void SerialUploadJob::AbortFromSignalHandler()
{
    m_upload.Abort();
}

QString SerialUploadJob::ErrorText() const
{
    return m_ended ? m_upload.ErrorText() : QString();
}

void SerialUploadJob::Ended()
{
    m_worker->wait();
    m_ended = true;
    emit Finished(m_result);
}
