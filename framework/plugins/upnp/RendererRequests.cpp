// SPDX-License-Identifier: MIT
#include "RendererRequests.h"

#include "UpnpText.h"

using Upnp::Answer;

RendererRequests::RendererRequests(std::unique_ptr<RendererLink> link)
    : m_link(std::move(link))
{
}

void RendererRequests::send(Upnp::Call call, Upnp::AnswerHandler handler)
{
    call.in.prepend({"InstanceID", QStringLiteral("0")});
    m_isBusy = true;
    m_link->call(call, [this, handler = std::move(handler)](const Answer &answer) {
        m_isBusy = false;
        handler(answer);
        Q_EMIT answered();
    });
}

QString RendererRequests::describe(const char *action, const Answer &answer) const
{
    const QString what = QLatin1String(action) + QStringLiteral(": ") + m_link->deviceName();
    switch (answer.outcome) {
    case Answer::Refused:
        return QStringLiteral("%1 refused: %2").arg(what, UpnpText::refusalText(answer.code, answer.message));
    case Answer::TimedOut:
        return QStringLiteral("%1 did not answer in time").arg(what);
    case Answer::Unreachable:
        return QStringLiteral("%1 cannot be reached: %2").arg(what, answer.message);
    case Answer::Missing:
    case Answer::Done:
        break;
    }
    return QStringLiteral("%1: %2").arg(what, answer.message);
}

void RendererRequests::trouble(const char *action, const Answer &answer)
{
    KelvoError::Code code = KelvoError::CommandRefused;
    if (answer.outcome == Answer::TimedOut)
        code = KelvoError::Timeout;
    else if (answer.outcome == Answer::Unreachable)
        code = KelvoError::NetworkFailed;
    else if (answer.outcome == Answer::Missing)
        code = KelvoError::DeviceGone;
    Q_EMIT troubled(code, describe(action, answer));
}
