// SPDX-License-Identifier: MIT
#pragma once

#include "Event.h"

#include <QObject>
#include <QPointer>

class Ear;
class Eye;
class KelvoRegistry;
class KelvoRenderer;
class MediaShelf;
struct Hearing;
struct Sighting;
struct KelvoContent;

/// Hears all that one renderer reports during a run, follows it when it goes and comes back, and asks what it does not
/// report by itself. GUI thread.
class RendererWatch : public QObject
{
    Q_OBJECT
public:
    /// @param number  which of the scenario's it is
    /// @param shelf  names the media; not owned, outlives this
    RendererWatch(KelvoRegistry *registry, KelvoRenderer *renderer, int number, const MediaShelf *shelf,
        QObject *parent = nullptr);

    /// Null while it is gone.
    KelvoRenderer *renderer() const { return m_renderer; }
    const Observation &observed() const { return m_observed; }

    /// What that hears counts as what the renderer plays. Not owned; outlives this.
    void listen(const Ear *ear);
    bool isHeard() const { return m_observed.heard.isListening(); }
    /// What that sees counts as what the renderer shows. Not owned; outlives this.
    void lookBy(const Eye *eye);
    bool isSeen() const { return m_observed.seen.isLooking(); }
    /// Ends with answered(): what is heard and seen is known as of now.
    void settleMeasured();

    /// A command is given now: what comes from now on counts as its effect, and no answer of before does.
    void beginCommand();
    /// Ends with answered(); not asked again while it has not answered.
    void askPosition();
    void askProperty(const QString &name);

Q_SIGNALS:
    /// Without a time.
    void happened(const Event &event);
    void answered();
    void propertyAnswered(const QString &name, const QVariant &value);

private Q_SLOTS:
    // Answers
    void takePosition(uint seconds);
    void takeFinePosition(const QString &name, const QVariant &value);
    void takeProperty(const QString &name, const QVariant &value);
    void takeStatus(const QString &playlist, uint index, int state, const QString &item);

private:
    void attach(KelvoRenderer *renderer);
    void hear(Event::Kind kind, const QString &name, const QVariantList &arguments);
    void hearSound(const Hearing &hearing);
    void seePicture(const Sighting &sighting);
    void hearMedia(int index, const KelvoContent &content);
    bool isStale();
    void follow();

    KelvoRegistry *const m_registry;
    QPointer<KelvoRenderer> m_renderer;
    const QString m_uuid;
    const int m_number;
    const MediaShelf *const m_shelf;
    Observation m_observed;
    bool m_stateTold = false;
    bool m_asked = false;
    bool m_askedBeforeCommand = false;
    bool m_answersFinely = true; ///< the position with its fraction, until it turns out that it does not
};
