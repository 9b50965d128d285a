// SPDX-License-Identifier: MIT
#include "IndexRun.h"

#include "KelvoMessageHandler.h"
#include "store/StoreSession.h"

#include <utility>

IndexRun::IndexRun(std::shared_ptr<StoreSession> session, StoreIndexing::Report report)
    : m_session(std::move(session))
    , m_report(std::move(report))
{
}

void IndexRun::stop()
{
    m_stopped = true;
    m_cancellation.cancel();
}

bool IndexRun::fail(const StoreError &error) const
{
    qCWarning(lcKelvo).noquote() << "The index of media files is not up to date:"
                                 << m_session->report(error).message;
    return false;
}

bool IndexRun::hasItsStore() const
{
    const StoreError gone = m_session->checkFiles();
    if (gone)
        m_session->report(gone);
    return !gone;
}
