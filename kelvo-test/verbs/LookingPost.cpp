// SPDX-License-Identifier: MIT
#include "LookingPost.h"

#include "Session.h"

namespace {
constexpr std::chrono::milliseconds openingTime = std::chrono::seconds(10);
} // namespace

bool LookingPost::look(const QString &place, Session &session, QString *error)
{
    m_eye.look(place);
    session.waitUntil([this] { return m_eye.isReady() || !m_eye.problem().isEmpty(); }, openingTime);
    if (m_eye.isReady() || session.isInterrupted())
        return true;
    *error = QStringLiteral("nothing can be seen at \"%1\": %2")
                 .arg(place,
                     m_eye.problem().isEmpty() ? QStringLiteral("the X server does not answer")
                                               : m_eye.problem());
    return false;
}
