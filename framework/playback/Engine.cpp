// SPDX-License-Identifier: MIT
#include "Engine.h"

#include <utility>

QString Engine::refusal(const QString &, const QVariant &) const
{
    return {};
}

bool Engine::canOpen(const QUrl &uri) const
{
    return uri.isValid() && !uri.isRelative();
}

void Engine::readList(quint64, const KelvoMediaInfo &) { }

bool Engine::applyProperty(const QString &, const QVariant &)
{
    return false;
}

bool Engine::setOwnProperty(const QString &, const QVariant &)
{
    return false;
}

QVariant Engine::ownProperty(const QString &) const
{
    return {};
}

void Engine::post(std::function<void()> call)
{
    QMetaObject::invokeMethod(this, std::move(call), Qt::QueuedConnection);
}

void Engine::command(std::function<void()> call)
{
    call();
}
