// SPDX-License-Identifier: MIT
#include "Playback.h"

#include "KelvoMessageHandler.h"
#include "RendererProperties.h"

#include <utility>

namespace {
// What a file address without a machine, or with this one, does not say (RFC 8089). A file with the same path here would be
// another one.
bool isOnAnotherMachine(const QUrl &uri)
{
    return uri.isLocalFile() && !uri.host().isEmpty() && uri.host() != QLatin1String("localhost");
}
} // namespace

Playback::Playback(Engine &engine, Reporter &reporter, RendererProperties &properties)
    : m_engine(engine)
    , m_reporter(reporter)
    , m_properties(properties)
{
    connect(&m_order, &PlayOrder::edited, this, &Playback::followEdit);
    connectEngine();
}

void Playback::connectEngine()
{
    connect(&m_engine, &Engine::stateReached, this, &Playback::followState);
    connect(&m_engine, &Engine::intentChanged, this, [this](quint64 epoch, bool paused) {
        if (epoch == m_epoch)
            m_pauseWanted = paused;
    });
    connect(&m_engine, &Engine::ended, this, &Playback::followEnd);
    connect(&m_engine, &Engine::failed, this,
        [this](quint64 epoch, KelvoError::Code code, const QString &message, bool progressed) {
            followFailure(epoch, KelvoError(code, message), progressed);
        });
    connect(&m_engine, &Engine::fact, this,
        [this](quint64 epoch, const QString &key, const QList<QVariant> &values) {
            if (epoch != m_epoch || values.isEmpty())
                return;
            // Facts come from media that opens, so the search is over; told first, because the duration takes
            // the place of the search's text on the screen.
            m_reporter.setScanning(1);
            m_reporter.takeFact(key, values);
        });
    connect(&m_engine, &Engine::buffering, this, [this](quint64 epoch, float fraction) {
        if (epoch == m_epoch)
            m_reporter.setBuffering(fraction);
    });
    connect(&m_engine, &Engine::replaced, this, &Playback::followForeign);
    connect(&m_engine, &Engine::listRead, this, &Playback::followList);
}

void Playback::assign(KelvoPlaylist *playlist)
{
    m_order.assign(playlist, state() == Stopped);
}

void Playback::play()
{
    const bool other = m_order.takeUpAssigned() || (!m_order.isInPlaylist() && m_order.hasPlaylist());
    if (state() != Stopped && !other) {
        resume();
        return;
    }
    const KelvoError problem = m_order.choose();
    if (problem.code() == KelvoError::NoError) {
        startRun();
    } else {
        m_reporter.tellError(problem);
        halt(false);
    }
}

void Playback::playAddress(const KelvoMediaInfo &item)
{
    m_order.setAddress(item);
    startRun();
}

void Playback::stop()
{
    m_engine.setPauseAt(std::nullopt);
    if (state() != Stopped)
        halt(false);
}

void Playback::pause()
{
    if (state() == Stopped || (state() == Paused && m_pauseWanted))
        return;
    m_pauseWanted = true;
    if (isInEngine())
        m_engine.pause();
    else
        m_reporter.setState(Paused);
}

void Playback::resume()
{
    if (state() == Stopped || (state() != Paused && !m_pauseWanted))
        return;
    m_pauseWanted = false;
    if (isInEngine())
        m_engine.resume();
    else
        m_reporter.setState(Transitioning);
}

/// Moves the current item without playing; false when something plays.
bool Playback::moveWhileStopped(int index)
{
    if (state() != Stopped)
        return false;
    if (m_order.moveTo(index)) {
        // What a player of others may still hold is no longer the current item.
        leaveEntry();
        m_engine.unload();
        m_entries.begin(m_order.item());
        m_reporter.move(inPlay());
    }
    return true;
}

void Playback::next()
{
    m_engine.setPauseAt(std::nullopt);
    if (state() == Stopped)
        m_order.takeUpAssigned();
    if (moveWhileStopped(m_order.nextIndex()))
        return;
    if (!m_order.isOtherAssigned() && m_entries.hasNext())
        startEntry(m_entries.entry() + 1);
    else if (m_order.isInPlaylist())
        skipTo(m_order.nextIndex());
    else
        halt(false);
}

void Playback::previous()
{
    m_engine.setPauseAt(std::nullopt);
    if (state() == Stopped)
        m_order.takeUpAssigned();
    if (moveWhileStopped(m_order.previousIndex()))
        return;
    if (!m_order.isOtherAssigned() && m_entries.entry() > 0)
        startEntry(m_entries.entry() - 1);
    else if (m_order.isInPlaylist())
        skipTo(m_order.previousIndex());
    else if (m_order.inPlay() == PlayOrder::InPlay::Address)
        startItem();
    else
        setPosition(0, KelvoRenderer::SeekAbsolute);
}

/// Leaves the item in play for the one at `index`; -1: for nothing. A playlist that was assigned in the meantime comes
/// first.
void Playback::skipTo(int index)
{
    const bool other = m_order.takeUpAssigned();
    if (other ? m_order.count() > 0 : m_order.moveTo(index))
        startItem();
    else
        halt(false);
}

void Playback::goTo(uint index)
{
    if (!m_order.chooseAssigned(index)) {
        m_reporter.tellError({KelvoError::IndexOutOfRange, QString::number(index)});
        return;
    }
    m_engine.setPauseAt(std::nullopt);
    startRun();
}

void Playback::setPosition(int seconds, int mode)
{
    if (mode != KelvoRenderer::SeekAbsolute && mode != KelvoRenderer::SeekRelative)
        m_reporter.tellError({KelvoError::InvalidValue, QStringLiteral("seek mode %1").arg(mode)});
    else if (state() != Stopped && isInEngine())
        m_engine.seek(seconds, KelvoRenderer::SeekMode(mode));
}

void Playback::answerPosition(Engine::PositionAnswer answer) const
{
    if (state() == Stopped || !isInEngine())
        m_engine.post([answer = std::move(answer)] { answer(0); });
    else
        m_engine.answerPosition(std::move(answer));
}

void Playback::tellAgain()
{
    const QVariant policy = m_properties.value(KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE);
    m_reporter.tellAgain(
        state() == Stopped ? std::nullopt : std::optional<Reporter::Item>(inPlay()), policy.toBool());
}

/// The user chose what to play.
void Playback::startRun()
{
    m_pauseWanted = false;
    m_run = {};
    startItem();
}

void Playback::startItem()
{
    const KelvoMediaInfo item = m_order.item();
    m_entries.begin(item, m_engine.knownEntries(item));
    startEntry(0);
}

void Playback::startEntry(int entry)
{
    leaveEntry();
    m_entries.goTo(entry);
    m_epoch = ++m_lastEpoch;
    m_reporter.setState(Transitioning);
    announce();
    if (m_entries.isList() && entry == 0 && !m_entries.hasPlayed())
        m_reporter.setScanning(0);
    open();
}

void Playback::open()
{
    const QString address = m_entries.uri().toDisplayString();
    if (isOnAnotherMachine(m_entries.uri())) {
        failLater({KelvoError::OnAnotherMachine, address});
    } else if (!m_engine.canOpen(m_entries.uri())) {
        failLater({KelvoError::InvalidUrl, address});
    } else if (m_entries.mayBeList() && m_engine.mayBeList(m_entries.item())) {
        // What played before must not be heard while the list is on its way.
        m_engine.unload();
        m_reporter.setScanning(0);
        readList({});
    } else {
        load();
    }
}

void Playback::failLater(const KelvoError &error)
{
    m_engine.post([this, epoch = m_epoch, error] { followFailure(epoch, error, false); });
}

void Playback::load()
{
    m_phase = Phase::InEngine;
    m_engine.load(
        {m_epoch, m_entries.item(), m_entries.uri(), m_entries.entry(), m_pauseWanted, rateForLoading()});
}

double Playback::rateForLoading()
{
    const QString name = KelvoRenderer::PropertyPlaybackSpeed;
    const double wanted = m_properties.wanted(name).toDouble();
    // Backwards from the beginning leads nowhere.
    const double rate = wanted < 0 || !m_engine.refusal(name, wanted).isEmpty() ? 1.0 : wanted;
    const bool isNews = rate != m_properties.value(name);
    m_properties.set(name, rate);
    if (isNews)
        m_reporter.tellProperty(name, rate);
    return rate;
}

/// Everything that is still said about the entry so far belongs to the past.
void Playback::leaveEntry()
{
    m_epoch = 0;
    m_reporter.setBuffering(1);
    if (std::exchange(m_phase, Phase::Nowhere) == Phase::Reading)
        m_engine.cancelReading();
}

void Playback::halt(bool completed)
{
    leaveEntry();
    m_reporter.setScanning(1);
    m_pauseWanted = false;
    m_engine.unload();
    m_reporter.setState(Stopped);
    if (completed)
        m_reporter.tellCompleted();
}

void Playback::take(const PlayRun::Step &step)
{
    if (step.action == PlayRun::Action::Play && m_order.moveTo(step.index))
        startItem();
    else
        halt(step.action == PlayRun::Action::Complete);
}

/// What an edit of the playlist has changed about it comes first.
bool Playback::isInPlay(quint64 epoch)
{
    if (epoch == m_epoch)
        settleEdit();
    return epoch == m_epoch && state() != Stopped;
}

void Playback::followState(quint64 epoch, State reached)
{
    if (epoch != m_epoch)
        return;
    if (reached == Stopped) {
        stoppedElsewhere();
        return;
    }
    m_phase = Phase::InEngine;
    if (reached == Playing || reached == Paused) {
        m_entries.notePlaying();
        m_reporter.setScanning(1);
        if (const std::optional<KelvoError> passedOver = m_entries.takePassedOver())
            m_reporter.tellError(*passedOver);
    }
    m_reporter.setState(reached);
}

/// The item stays in the player: who goes on with it there is shown.
void Playback::stoppedElsewhere()
{
    m_pauseWanted = false;
    m_reporter.setBuffering(1);
    m_reporter.setScanning(1);
    m_reporter.setState(Stopped);
}

void Playback::followForeign(const KelvoMediaInfo &item)
{
    leaveEntry();
    m_order.setForeign();
    m_entries.begin(item);
    m_phase = Phase::InEngine;
    announce();
}

void Playback::followEnd(quint64 epoch, bool progressed)
{
    if (!isInPlay(epoch))
        return;
    m_run.noteEnd(progressed);
    if (m_entries.hasNext())
        startEntry(m_entries.entry() + 1);
    else
        endItem();
}

void Playback::endItem()
{
    const PlayRun::Step step = m_run.afterEnd(place());
    if (step.nothingPlayable)
        m_reporter.tellError({KelvoError::NothingPlayable, m_order.playlistName()});
    take(step);
}

void Playback::followFailure(quint64 epoch, const KelvoError &failure, bool progressed)
{
    if (!isInPlay(epoch))
        return;
    m_run.noteFailure(progressed);
    failEntry(failure, progressed);
}

void Playback::failEntry(const KelvoError &failure, bool progressed)
{
    if (m_entries.mayBeList() && m_engine.mayBeList(failure.code())) {
        readList(failure);
        return;
    }
    if (!m_entries.isList()) {
        failItem(failure, progressed);
        return;
    }
    qCWarning(lcKelvo) << "Entry" << m_entries.entry() << "of" << m_entries.item().url()
                       << "does not play:" << failure.message();
    if (m_entries.hasPlayed())
        m_reporter.tellError(failure);
    else
        m_reporter.setScanning(m_entries.passOver(failure));
    if (m_entries.hasNext())
        startEntry(m_entries.entry() + 1);
    else if (m_entries.hasPlayed())
        endItem();
    else
        failItem(
            {KelvoError::NothingPlayable,
                QStringLiteral("%1: %2").arg(m_entries.item().url().toDisplayString(), failure.message())},
            progressed);
}

void Playback::failItem(const KelvoError &failure, bool progressed)
{
    m_reporter.setScanning(1);
    m_reporter.tellError(failure);
    const PlayRun::Step step = m_run.afterFailure(place(), progressed);
    if (step.nothingPlayable && failure.code() != KelvoError::NothingPlayable)
        m_reporter.tellError({KelvoError::NothingPlayable, m_order.playlistName()});
    take(step);
}

void Playback::readList(const KelvoError &failure)
{
    m_entries.lookInto(failure);
    m_phase = Phase::Reading;
    m_engine.readList(m_epoch, m_entries.item());
}

void Playback::followList(quint64 epoch, const QList<QUrl> &entries, const KelvoError &problem)
{
    if (epoch != m_epoch || m_phase != Phase::Reading)
        return;
    m_phase = Phase::Nowhere;
    const KelvoError held = m_entries.takeHeldFailure();
    if (!entries.isEmpty()) {
        m_entries.becomeList(entries);
        startEntry(0);
    } else if (held.code() != KelvoError::NoError) {
        failEntry(held, false);
    } else if (problem.code() != KelvoError::NoError) {
        failEntry(problem, false);
    } else {
        m_reporter.setScanning(1);
        load();
    }
}

/// The playlist is edited by somebody else's call, perhaps in several steps: what follows from it waits for them.
void Playback::followEdit()
{
    if (!std::exchange(m_editPending, true))
        m_engine.post([this] { settleEdit(); });
}

void Playback::settleEdit()
{
    if (!std::exchange(m_editPending, false) || state() == Stopped || !m_order.isInPlaylist())
        return;
    if (m_order.index() < 0)
        halt(false);
    else if (m_entries.item().uuid() != m_order.item().uuid())
        startItem();
    else
        announce();
}

PlayRun::Place Playback::place() const
{
    return m_order.place(m_properties.value(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE).toBool());
}

Reporter::Item Playback::inPlay() const
{
    return {m_order.playlist(), m_order.index(), m_entries.content()};
}
