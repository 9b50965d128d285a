// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoAnswer.h"
#include "KelvoRenderer.h"

#include <QStringList>

/// A renderer that only writes down what it is told. Tests emit its signals and give its answers themselves.
class RecordingRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    explicit RecordingRenderer(QString uuid, QString name = {});

    /// All commands in order, for instance "play()", "setPosition(-10,1)", "setKelvoProperty(xid,uint,7)",
    /// "kelvoProperty(volume)"; cleared when taken.
    QStringList takeCalls();
    const QStringList &calls() const { return m_calls; }
    /// Called with each command, once it is recorded.
    std::function<void()> onCall;
    KelvoPlaylist *assigned() const { return m_assigned; }

    /// Answers the oldest request of that kind that was not answered yet; false when there is none.
    bool answerStatus(const QString &playlistId, uint index, int state, const QString &objectId);
    bool answerPosition(uint seconds);
    bool answerProperty(const QString &name, const QVariant &value);
    void rename(const QString &name);

    QString uuid() const override;
    QString name() const override;
    void play() override;
    void playUri(const QUrl &uri) override;
    void playUriWithType(const QUrl &uri, const QString &contentType) override;
    void stop() override;
    void pause() override;
    void resume() override;
    void next() override;
    void previous() override;
    void pauseAt(uint seconds) override;
    void gotoIndex(uint index) override;
    void setPosition(int seconds, int mode) override;
    void getStatus(QObject *receiver, const char *slot) override;
    void getPosition(QObject *receiver, const char *slot) override;
    void assignPlaylist(KelvoPlaylist *playlist) override;
    void setKelvoProperty(const QString &name, const QVariant &value) override;
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override;

private:
    void record(const QString &command, const QStringList &arguments = {});

    QString m_uuid;
    QString m_name;
    QStringList m_calls;
    KelvoPlaylist *m_assigned = nullptr;
    QList<KelvoAnswer> m_statusAnswers;
    QList<KelvoAnswer> m_positionAnswers;
    QList<std::pair<QString, KelvoAnswer>> m_propertyAnswers;
};
