// SPDX-License-Identifier: MIT
#include "ItemLoader.h"

#include <QDBusError>

#include <algorithm>

using namespace PlaylistProtocol;

namespace {
// Milliseconds between the end of one pass and the next one.
constexpr int shortestPause = 20;
constexpr int longestPause = 3000;
} // namespace

ItemLoader::ItemLoader(PeerCalls *calls, QString path, uint revision, QObject *parent)
    : QObject(parent)
    , m_calls(calls)
    , m_path(std::move(path))
    , m_hasFiles(calls->passesFiles())
    , m_newestRevision(revision)
{
    m_nextPass.setSingleShot(true);
    connect(&m_nextPass, &QTimer::timeout, this, &ItemLoader::startPass);
    connect(&m_nextSlice, &QTimer::timeout, this, &ItemLoader::readSlice);
}

void ItemLoader::use()
{
    if (m_state == State::Unused || m_state == State::Stalled)
        startPass();
}

void ItemLoader::noteRevision(uint revision)
{
    if (m_state == State::Broken || !checkRevision(revision))
        return;
    // While a pass runs, what comes next tells of which revision it is.
    const bool behind = m_state == State::Settled && revision != m_pass.revision;
    if (behind || m_state == State::Stalled)
        schedulePass();
}

void ItemLoader::schedulePass()
{
    m_state = State::Waiting;
    m_nextPass.start(std::clamp(m_pause, shortestPause, longestPause));
}

/// Each pass that came to nothing doubles the pause, so that a list in motion costs little.
void ItemLoader::restartLater()
{
    m_pause = std::clamp(m_pause * 2, shortestPause, longestPause);
    schedulePass();
}

void ItemLoader::startPass()
{
    m_nextPass.stop();
    m_state = State::Reading;
    // What an unfinished first pass has handed on stays in view until a whole list can take its place.
    if (m_pass.intake.count() > 0)
        m_firstPass = false;
    m_pass = {};
    m_pass.clock.start();
    requestMore();
}

/// A list that a page holds needs no file.
void ItemLoader::requestMore()
{
    if (!m_calls)
        return;
    if (m_hasFiles && m_pass.intake.count() >= firstPageItems)
        requestFile();
    else
        requestPage();
}

void ItemLoader::requestPage()
{
    const uint asked = m_pass.intake.count() == 0 ? firstPageItems : nextPageItems;
    QDBusMessage call = m_calls->make(m_path, interface, getItems);
    call << uint(m_pass.intake.count()) << asked;
    m_calls->queue(this, call, [this, asked](const QDBusMessage &reply) {
        if (m_state != State::Reading) // What its owner did meanwhile has ended that.
            return;
        if (reply.type() == QDBusMessage::ErrorMessage)
            handleError(QDBusError(reply));
        else
            handlePage(reply, asked);
    });
}

void ItemLoader::requestFile()
{
    m_calls->queue(this, m_calls->make(m_path, interface, openItems), [this](const QDBusMessage &reply) {
        if (m_state != State::Reading)
            return;
        const QDBusError error(reply);
        if (error.type() == QDBusError::UnknownMethod || error.type() == QDBusError::NotSupported) {
            m_hasFiles = false;
            requestMore();
        } else if (reply.type() == QDBusMessage::ErrorMessage) {
            handleError(error);
        } else {
            handleFile(reply);
        }
    });
}

void ItemLoader::handlePage(const QDBusMessage &reply, uint asked)
{
    if (reply.signature() != u"a(ssssx)u") {
        breakOff(QStringLiteral("its items are of the type \"%1\"").arg(reply.signature()));
        return;
    }
    bool more = false;
    SharedItems items = readItems(reply.arguments().at(0).value<QDBusArgument>(), asked, &more);
    if (more)
        breakOff(QStringLiteral("it gave more items than it was asked for"));
    else if (!isOfPass(reply.arguments().at(1).toUInt()))
        return;
    else if (items.isEmpty())
        endPass();
    else
        takePage(std::move(items));
}

void ItemLoader::takePage(SharedItems items)
{
    const bool all = m_pass.intake.take(items);
    if (all)
        requestMore(); // Before the items are shown: the owner goes on meanwhile.
    show(items);
    if (!all)
        cutPass();
}

void ItemLoader::handleFile(const QDBusMessage &reply)
{
    if (reply.signature() != u"huu") {
        breakOff(QStringLiteral("the file of its items is of the type \"%1\"").arg(reply.signature()));
        return;
    }
    if (!isOfPass(reply.arguments().at(2).toUInt()))
        return;
    const uint count = reply.arguments().at(1).toUInt();
    QString reason;
    m_pass.file
        = ItemFileReader::open(reply.arguments().at(0).value<QDBusUnixFileDescriptor>(), count, &reason);
    if (!m_pass.file) {
        breakOff(reason);
        return;
    }
    m_pass.intake.expect(count);
    // What the first page gave comes again.
    if (m_pass.file->read(m_pass.intake.count()))
        m_nextSlice.start(0);
    else
        breakOff(QStringLiteral("the file of its items holds something else"));
}

void ItemLoader::readSlice()
{
    std::optional<SharedItems> items = m_pass.file->read(nextPageItems);
    if (!items) {
        breakOff(QStringLiteral("the file of its items holds something else"));
        return;
    }
    const bool all = m_pass.intake.take(*items);
    const bool atEnd = m_pass.file->atEnd();
    show(*items);
    if (!all)
        cutPass();
    else if (atEnd)
        endPass();
}

void ItemLoader::handleError(const QDBusError &error)
{
    if (error.name() == changedError) {
        restartLater();
        return;
    }
    switch (error.type()) {
    case QDBusError::UnknownMethod:
        giveUp(QStringLiteral("its process cannot give its items"));
        break;
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownObject:
    case QDBusError::Disconnected:
        // It is just going; the news of that is on its way.
        m_state = State::Stalled;
        break;
    case QDBusError::LimitsExceeded:
        // Many of its lists are being read at once.
        restartLater();
        break;
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        handleSilence();
        break;
    default:
        giveUp(QStringLiteral("its process answers: ") + error.message().left(maxTextCharacters));
    }
}

void ItemLoader::handleSilence()
{
    if (m_pass.attempt++ < maxAttempts) {
        requestMore();
        return;
    }
    giveUp(QStringLiteral("its process does not answer"));
    if (m_calls)
        m_nextPass.start(restInTimeouts * m_calls->timeout());
}

/// What is of another revision than the items before means that the list has changed in between.
bool ItemLoader::isOfPass(uint revision)
{
    if (!checkRevision(revision))
        return false;
    if (m_pass.intake.count() == 0)
        m_pass.revision = revision;
    if (revision == m_pass.revision)
        return true;
    restartLater();
    return false;
}

bool ItemLoader::checkRevision(uint revision)
{
    if (revision < m_newestRevision) {
        breakOff(QStringLiteral("its revision went back from %1 to %2").arg(m_newestRevision).arg(revision));
        return false;
    }
    m_newestRevision = revision;
    return true;
}

void ItemLoader::show(const SharedItems &items)
{
    if (m_firstPass)
        Q_EMIT itemsArrived(items);
    else
        m_pass.staged += items;
}

/// There was more than is taken.
void ItemLoader::cutPass()
{
    Q_EMIT complaint(
        QStringLiteral("it is too long, only the first %1 items are shown").arg(m_pass.intake.count()));
    finishPass();
}

/// The list has come to its own end.
void ItemLoader::endPass()
{
    finishPass();
    Q_EMIT completed(m_pass.revision, m_pass.intake.count());
}

void ItemLoader::finishPass()
{
    m_state = State::Settled;
    m_saidStalled = false;
    m_nextSlice.stop();
    m_pass.file.reset();
    m_pass.intake.end();
    const SharedItems staged = std::exchange(m_pass.staged, {});
    // Half of the time at most is spent on a list that changes all the time.
    m_pause = int(std::min<qint64>(m_pass.clock.elapsed(), longestPause));
    if (m_newestRevision != m_pass.revision)
        schedulePass();
    if (!std::exchange(m_firstPass, false))
        Q_EMIT itemsReplaced(staged);
}

void ItemLoader::giveUp(const QString &why)
{
    m_state = State::Stalled;
    if (!std::exchange(m_saidStalled, true))
        Q_EMIT complaint(why + QStringLiteral(", what is shown of it may be out of date"));
}

void ItemLoader::breakOff(const QString &reason)
{
    m_state = State::Broken;
    m_nextPass.stop();
    m_nextSlice.stop();
    m_pass = {};
    Q_EMIT broken(reason);
}
