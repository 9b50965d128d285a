// SPDX-License-Identifier: MIT
#pragma once

#include "RendererLink.h"

#include <algorithm>
#include <functional>
#include <optional>

/// A device that answers from the event loop: as its state is, or with what it was told to say to an action.
class FakeRendererLink : public RendererLink
{
public:
    QString deviceName() const override { return QStringLiteral("Fake"); }
    void call(const Upnp::Call &call, Upnp::AnswerHandler handler) override
    {
        ++underWay;
        mostUnderWay = qMax(mostUnderWay, underWay);
        calls.append(call);
        if (asked)
            asked(call.action);
        QMetaObject::invokeMethod(
            this,
            [this, call, handler] {
                --underWay;
                handler(answerTo(call));
            },
            Qt::QueuedConnection);
    }
    Upnp::Answer answerTo(const Upnp::Call &call)
    {
        if (answers.contains(call.action) && (answerOnce != call.action || count(call.action) <= 1))
            return answers.value(call.action);
        static const QHash<QByteArray, QString> states
            = {{"Play", "PLAYING"}, {"Pause", "PAUSED_PLAYBACK"}, {"Stop", "STOPPED"}};
        state = states.value(call.action, state);
        if (call.action == "SetAVTransportURI")
            uri = call.in.at(1).second;
        if (call.action == "Play" && !keepsTrack)
            trackUri = uri;
        if (call.action == "SetVolume")
            volume = call.in.at(2).second;
        Upnp::Answer answer;
        answer.values = {{"CurrentTransportState", state}, {"CurrentURI", uri}, {"RelTime", position},
            {"TrackDuration", duration}, {"TrackURI", trackUri}, {"CurrentVolume", volume}};
        if (call.out.contains("TrackMetaData"))
            answer.track = track;
        return answer;
    }
    void refuse(const QByteArray &action, int code, const QString &message = QStringLiteral("No"))
    {
        Upnp::Answer answer;
        answer.outcome = Upnp::Answer::Refused;
        answer.code = code;
        answer.message = message;
        answers.insert(action, answer);
    }
    int count(const QByteArray &action) const
    {
        return int(std::count_if(
            calls.begin(), calls.end(), [&](const Upnp::Call &call) { return call.action == action; }));
    }

    std::function<void(const QByteArray &)> asked; ///< hears of each action before it is answered
    QList<Upnp::Call> calls;
    QHash<QByteArray, Upnp::Answer> answers;
    QByteArray answerOnce; ///< from the second call of this action on, as the state is
    QString state = QStringLiteral("STOPPED");
    QString uri;
    QString trackUri; ///< that of what is heard
    bool keepsTrack = false; ///< it does not go to another item at once
    QString position = QStringLiteral("0:00:01");
    QString duration = QStringLiteral("0:00:10");
    QString volume = QStringLiteral("50");
    std::optional<Upnp::Track> track; ///< what is heard, for who asks for it
    int underWay = 0;
    int mostUnderWay = 0;
};
