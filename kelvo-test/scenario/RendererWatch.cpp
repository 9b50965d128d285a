// SPDX-License-Identifier: MIT
#include "RendererWatch.h"

#include "Ear.h"
#include "Eye.h"
#include "KelvoContent.h"
#include "KelvoPlaylist.h"
#include "KelvoRegistry.h"
#include "MediaShelf.h"

#include <utility>

RendererWatch::RendererWatch(
    KelvoRegistry *registry, KelvoRenderer *renderer, int number, const MediaShelf *shelf, QObject *parent)
    : QObject(parent)
    , m_registry(registry)
    , m_uuid(renderer->uuid())
    , m_number(number)
    , m_shelf(shelf)
{
    attach(renderer);
    follow();
}

void RendererWatch::follow()
{
    connect(
        m_registry, &KelvoRegistry::rendererAdded, this, [this](const QString &uuid, const QString &name) {
            KelvoRenderer *renderer = m_registry->findRendererByUuid(uuid);
            if (uuid != m_uuid || !renderer)
                return;
            attach(renderer);
            hear(Event::Appears, name, {});
        });
    connect(
        m_registry, &KelvoRegistry::rendererRemoved, this, [this](const QString &uuid, const QString &name) {
            if (uuid != m_uuid)
                return;
            if (m_renderer)
                m_renderer->disconnect(this);
            m_renderer.clear();
            m_asked = false;
            hear(Event::Vanishes, name, {});
        });
}

void RendererWatch::attach(KelvoRenderer *renderer)
{
    m_renderer = renderer;
    m_asked = false;
    m_answersFinely = true;
    m_stateTold = false;
    const auto report = [this](const char *name, const QVariantList &arguments) {
        hear(Event::Report, QString::fromLatin1(name), arguments);
    };
    connect(renderer, &KelvoRenderer::stateChanged, this, [this, report](KelvoRenderer::State state) {
        m_stateTold = true;
        report("stateChanged", {QVariant::fromValue(state)});
    });
    connect(renderer, &KelvoRenderer::mediaChanged, this, &RendererWatch::hearMedia);
    connect(renderer, &KelvoRenderer::playbackCompleted, this, [report] { report("playbackCompleted", {}); });
    connect(renderer, &KelvoRenderer::playlistChanged, this, [report](const KelvoPlaylist *playlist) {
        report("playlistChanged", {playlist ? playlist->name() : QStringLiteral("none")});
    });
    connect(renderer, &KelvoRenderer::metadataChanged, this,
        [report](const QString &key, const QList<QVariant> &values) {
            report("metadataChanged", {key, QVariant(values)});
        });
    connect(renderer, &KelvoRenderer::kelvoPropertyChanged, this,
        [report](const QString &name, const QVariant &value) {
            report("kelvoPropertyChanged", {name, value});
        });
    connect(renderer, &KelvoRenderer::bufferingInfo, this,
        [report](float fraction) { report("bufferingInfo", {fraction}); });
    connect(renderer, &KelvoRenderer::scanningInfo, this,
        [report](float fraction) { report("scanningInfo", {fraction}); });
    connect(renderer, &KelvoRenderer::error, this, [report](const KelvoError &error) {
        report("error", {int(error.code()), error.message()});
    });
    connect(renderer, &KelvoRenderer::nameChanged, this,
        [report](const QString &name) { report("nameChanged", {name}); });
    renderer->getStatus(this, "takeStatus(QString,uint,int,QString)");
}

void RendererWatch::hearMedia(int index, const KelvoContent &content)
{
    hear(Event::Report, QStringLiteral("mediaChanged"), {index, m_shelf->nameOf(content.url)});
}

void RendererWatch::hear(Event::Kind kind, const QString &name, const QVariantList &arguments)
{
    Event event;
    event.kind = kind;
    event.renderer = m_number;
    event.name = name;
    event.arguments = arguments;
    m_observed.take(event);
    Q_EMIT happened(event);
}

void RendererWatch::listen(const Ear *ear)
{
    m_observed.heard.beginListening();
    connect(ear, &Ear::heard, this, &RendererWatch::hearSound);
}

void RendererWatch::hearSound(const Hearing &hearing)
{
    const QVariant volume = m_observed.properties.value(KelvoRenderer::PropertyVolume);
    if (volume.isValid())
        m_observed.heard.takeVolume(volume.toInt(), Ear::now());
    m_observed.heard.take(hearing);
    if (hearing.kind == Hearing::Goes)
        settleMeasured();
    else
        hear(Event::Heard, hearing.kindText(), {m_observed.heard.text()});
}

void RendererWatch::settleMeasured()
{
    m_observed.heard.settle(Ear::now());
    m_observed.seen.settle(Eye::now());
    Q_EMIT answered();
}

void RendererWatch::lookBy(const Eye *eye)
{
    m_observed.seen.beginLooking();
    // That nothing is there may have been told already.
    if (eye->last())
        m_observed.seen.take(*eye->last());
    connect(eye, &Eye::seen, this, &RendererWatch::seePicture);
}

void RendererWatch::seePicture(const Sighting &sighting)
{
    m_observed.seen.take(sighting);
    if (sighting.kind == Sighting::Goes)
        settleMeasured();
    else
        hear(Event::Seen, sighting.kindText(), {m_observed.seen.text()});
}

void RendererWatch::beginCommand()
{
    m_observed.heard.beginCommand(Ear::now());
    m_observed.seen.beginCommand(Eye::now());
    m_observed.beginCommand();
    m_observed.position.reset();
    m_askedBeforeCommand = m_asked;
}

void RendererWatch::askPosition()
{
    if (!m_renderer || m_asked)
        return;
    m_asked = true;
    if (m_answersFinely)
        m_renderer->kelvoProperty(
            KelvoRenderer::PropertyPosition, this, "takeFinePosition(QString,QVariant)");
    else
        m_renderer->getPosition(this, "takePosition(uint)");
}

void RendererWatch::askProperty(const QString &name)
{
    if (m_renderer)
        m_renderer->kelvoProperty(name, this, "takeProperty(QString,QVariant)");
}

/// An answer to what was asked before the last command.
bool RendererWatch::isStale()
{
    m_asked = false;
    return std::exchange(m_askedBeforeCommand, false);
}

void RendererWatch::takePosition(uint seconds)
{
    if (isStale())
        return;
    m_observed.position = seconds;
    m_observed.resolution = 1;
    Q_EMIT answered();
}

void RendererWatch::takeFinePosition(const QString &, const QVariant &value)
{
    if (!value.isValid()) {
        m_answersFinely = false;
        m_asked = false;
        m_askedBeforeCommand = false;
        askPosition();
        return;
    }
    if (isStale())
        return;
    m_observed.position = value.toDouble();
    m_observed.resolution = 0;
    Q_EMIT answered();
}

void RendererWatch::takeProperty(const QString &name, const QVariant &value)
{
    if (value.isValid())
        m_observed.properties.insert(name, value);
    Q_EMIT propertyAnswered(name, value);
    Q_EMIT answered();
}

void RendererWatch::takeStatus(const QString &, uint, int state, const QString &)
{
    if (!m_stateTold)
        m_observed.state = KelvoRenderer::State(state);
}
