// SPDX-License-Identifier: MIT
#include "PropertyKeeper.h"

#include "RendererWatch.h"

namespace {
constexpr int patienceForAnswers = 2000; // milliseconds
}

PropertyKeeper::PropertyKeeper(RendererWatch *watch, QSet<QString> names, QObject *parent)
    : QObject(parent)
    , m_watch(watch)
    , m_names(std::move(names))
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        m_open.clear();
        Q_EMIT known();
    });
    connect(watch, &RendererWatch::propertyAnswered, this, &PropertyKeeper::take);
}

void PropertyKeeper::ask()
{
    m_open = m_names;
    m_patience.start(m_open.isEmpty() ? 0 : patienceForAnswers);
    for (const QString &name : m_names)
        m_watch->askProperty(name);
}

void PropertyKeeper::take(const QString &name, const QVariant &value)
{
    if (!m_open.remove(name))
        return;
    if (value.isValid())
        m_values.insert(name, value);
    if (m_open.isEmpty()) {
        m_patience.stop();
        Q_EMIT known();
    }
}

void PropertyKeeper::restore()
{
    KelvoRenderer *renderer = m_watch->renderer();
    if (!renderer)
        return;
    for (auto value = m_values.cbegin(); value != m_values.cend(); ++value) {
        const QVariant now = m_watch->observed().properties.value(value.key());
        if (now.isValid() && now != *value)
            renderer->setKelvoProperty(value.key(), *value);
    }
}
