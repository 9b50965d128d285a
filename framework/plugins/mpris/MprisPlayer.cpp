// SPDX-License-Identifier: MIT
#include "MprisPlayer.h"

#include "ItemRenderer.h"
#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"
#include "MprisSnapshot.h"
#include "MprisTransport.h"
#include "RemotePlayer.h"

#include <QDBusError>
#include <QDBusPendingCall>

#include <algorithm>

namespace {
/// Milliseconds: a name that changes more often than this is not followed each time.
constexpr qint64 nameEvery = 1000;
/// How long after a refusal it is asked again, at first and at most; the time doubles.
constexpr int firstWait = 100;
constexpr int longestWait = 2000;
/// So often refused, one is worth a word.
constexpr int worthAWord = 4;

/// "mpv" of "org.mpris.MediaPlayer2.mpv".
QString restOf(const QString &service)
{
    return service.mid(Mpris::servicePrefix.size());
}
} // namespace

MprisPlayer::MprisPlayer(
    KelvoRegistry *registry, MprisAddress address, QString service, Namer namer, QObject *parent)
    : QObject(parent)
    , m_registry(registry)
    , m_address(std::move(address))
    , m_service(std::move(service))
    , m_namer(std::move(namer))
    , m_pings(m_address)
{
    m_address.label = restOf(m_service);
    connect(&m_pings, &MprisPings::answered, this, [this] {
        if (!m_renderer && !m_asking)
            ask();
    });
    connect(&m_watch, &QTimer::timeout, this, &MprisPlayer::watch);
    m_watch.start(m_address.timeout / 2);
    m_nextName.setSingleShot(true);
    connect(&m_nextName, &QTimer::timeout, this, &MprisPlayer::askName);
    m_refusals.next.setSingleShot(true);
    connect(&m_refusals.next, &QTimer::timeout, this, &MprisPlayer::ask);
    ask();
}

MprisPlayer::~MprisPlayer()
{
    withdraw();
}

void MprisPlayer::leave()
{
    m_watch.stop();
    m_nextName.stop();
    m_refusals.next.stop();
    deleteLater();
    withdraw();
}

/// Who it is, and then what it can.
void MprisPlayer::ask()
{
    m_asking = true;
    auto *watcher = new QDBusPendingCallWatcher(
        m_address.connection.asyncCall(m_address.getAll(Mpris::rootInterface), m_address.timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher->isError() && Mpris::isSilence(watcher->error()))
            m_asking = false;
        else
            takeIdentity(watcher->reply(), watcher->isError());
    });
}

QVariantMap MprisPlayer::rootProperties(const QDBusMessage &reply, bool isError) const
{
    if (isError || !m_address.isAnswer(reply) || reply.arguments().isEmpty())
        return {};
    return MprisValues::map(reply.arguments().constFirst());
}

/// A player that does not tell of itself is known by its bus name.
QString MprisPlayer::nameFrom(const QVariantMap &rootProperties) const
{
    const QString identity = MprisValues::text(rootProperties.value(QStringLiteral("Identity"))).simplified();
    return m_namer(identity.isEmpty() ? restOf(m_service) : identity.left(200));
}

void MprisPlayer::noteNewIdentity()
{
    const qint64 passed = m_lastName.isValid() ? m_lastName.elapsed() : nameEvery;
    if (!m_nextName.isActive())
        m_nextName.start(int(std::max<qint64>(0, nameEvery - passed)));
}

void MprisPlayer::askName()
{
    m_lastName.start();
    auto *watcher = new QDBusPendingCallWatcher(
        m_address.connection.asyncCall(m_address.getAll(Mpris::rootInterface), m_address.timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QVariantMap properties = rootProperties(watcher->reply(), watcher->isError());
        // Before there is a renderer its name is still being asked for.
        if (properties.isEmpty() || !m_transport)
            return;
        m_name = nameFrom(properties);
        m_address.label = m_name;
        m_transport->rename(m_name);
    });
}

void MprisPlayer::takeIdentity(const QDBusMessage &reply, bool isError)
{
    const QVariantMap properties = rootProperties(reply, isError);
    m_isNamed = !properties.isEmpty();
    m_name = nameFrom(properties);
    m_address.label = m_name;
    m_hasTrackList = properties.value(QStringLiteral("HasTrackList")).toBool();

    auto *watcher = new QDBusPendingCallWatcher(
        m_address.connection.asyncCall(m_address.getAll(Mpris::playerInterface), m_address.timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_asking = false;
        takePlayer(watcher->reply(), watcher->isError() ? watcher->error().message() : QString(),
            watcher->isError() && Mpris::isSilence(watcher->error()));
    });
}

void MprisPlayer::takePlayer(const QDBusMessage &reply, const QString &error, bool silent)
{
    if (silent)
        return;
    m_pings.noteLife();
    const bool answers = error.isEmpty() && m_address.isAnswer(reply) && reply.signature() == u"a{sv}";
    if (answers) {
        m_refusals.count = 0;
        create(MprisValues::map(reply.arguments().constFirst()));
    } else if (error.isEmpty()) {
        takeRefusal(QStringLiteral("its properties are of the type \"%1\"").arg(reply.signature().left(100)));
    } else {
        takeRefusal(error.left(500));
    }
}

/// Some take their name before they have anything to show under it.
void MprisPlayer::takeRefusal(const QString &reason)
{
    m_refusals.next.start(std::min(longestWait, firstWait << std::min(m_refusals.count, 10)));
    if (++m_refusals.count == worthAWord)
        qCWarning(lcKelvo).noquote() << m_service << "is no player that can be driven:" << reason;
}

void MprisPlayer::create(const QVariantMap &properties)
{
    if (m_renderer || !m_registry)
        return;
    auto transport = std::make_unique<MprisTransport>(m_address, properties, m_hasTrackList);
    m_transport = transport.get();
    m_renderer = std::make_unique<ItemRenderer>(std::make_unique<RemotePlayer>(std::move(transport), m_name),
        QStringLiteral("mpris:") + restOf(m_service));
    // Into the registry once all that is known already has been reported: the transport does so from the event loop,
    // and so does the renderer after it.
    QMetaObject::invokeMethod(
        m_transport,
        [this] {
            QMetaObject::invokeMethod(
                m_transport, [this] { publish(); }, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    if (!m_isNamed)
        noteNewIdentity();
}

void MprisPlayer::publish()
{
    if (m_registry)
        m_registry->addRenderer(m_renderer.get());
}

/// Whoever hears of it may unload all of this: nothing is touched afterwards.
void MprisPlayer::withdraw()
{
    const auto renderer = std::move(m_renderer);
    m_transport = nullptr;
    if (renderer && m_registry && m_registry->findRendererByUuid(renderer->uuid()) == renderer.get())
        m_registry->removeRenderer(renderer.get());
}

void MprisPlayer::noteSignal(const QDBusMessage &message)
{
    if (!m_transport)
        return;
    if (message.member() == u"Seeked" && !message.arguments().isEmpty())
        m_transport->noteSeeked(message.arguments().constFirst());
    else
        m_transport->notePropertiesChanged();
}

void MprisPlayer::watch()
{
    if (m_refusals.next.isActive())
        return;
    if (!m_renderer || m_pings.isDue())
        m_pings.ping();
    if (m_renderer && m_pings.isSilent()) {
        qCWarning(lcKelvo).noquote() << m_name << "does not answer any more";
        withdraw();
    }
}
