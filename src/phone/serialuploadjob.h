// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "profileupload.h"
#include "uploadjob.h"

#include <memory>

class QThread;

// An upload over the serial line: the blocking ProfileUpload runs on a thread
// of its own, and what it reports is passed on through the event loop of the
// thread that made the job. A job destroyed while it runs aborts the upload
// and waits for it to end (at most one read time-out).
class SerialUploadJob : public UploadJob
{
    Q_OBJECT

public:
    explicit SerialUploadJob(UploadRequest request, QObject *parent = nullptr);
    ~SerialUploadJob() override;

    void Start() override;
    void Abort() override;
    void AbortFromSignalHandler() override;
    QString ErrorText() const override;

private:
    void Ended();

    ProfileUpload m_upload;
    std::unique_ptr<QThread> m_worker;
    // Written by the worker, read once it has ended.
    UploadResult m_result = UploadResult::Failed;
    bool m_ended = false;
};
