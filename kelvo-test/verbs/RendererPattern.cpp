// SPDX-License-Identifier: MIT
#include "RendererPattern.h"

#include "KelvoRenderer.h"

#include <fnmatch.h>

#include <algorithm>
#include <iterator>

namespace {
template <typename Condition>
QList<KelvoRenderer *> those(const QList<KelvoRenderer *> &renderers, Condition fits)
{
    QList<KelvoRenderer *> found;
    std::copy_if(renderers.cbegin(), renderers.cend(), std::back_inserter(found), fits);
    return found;
}

bool fitsGlob(const QString &glob, const QString &text)
{
    return ::fnmatch(qUtf8Printable(glob.toCaseFolded()), qUtf8Printable(text.toCaseFolded()), 0) == 0;
}
} // namespace

RendererPattern::RendererPattern(QString text)
    : m_text(std::move(text))
{
}

bool RendererPattern::isOpen() const
{
    return m_text == QLatin1String("all") || m_text.contains(u'*') || m_text.contains(u'?')
        || m_text.contains(u'[');
}

QList<KelvoRenderer *> RendererPattern::matchesAmong(const QList<KelvoRenderer *> &renderers) const
{
    auto byUuid = those(renderers, [this](const KelvoRenderer *one) { return one->uuid() == m_text; });
    if (!byUuid.isEmpty())
        return byUuid;
    auto byName = those(renderers, [this](const KelvoRenderer *one) {
        return !m_text.isEmpty() && one->name().compare(m_text, Qt::CaseInsensitive) == 0;
    });
    if (!byName.isEmpty())
        return byName;
    if (m_text == QLatin1String("all"))
        return renderers;
    if (!isOpen())
        return {};
    return those(renderers, [this](const KelvoRenderer *one) {
        return fitsGlob(m_text, one->uuid()) || fitsGlob(m_text, one->name());
    });
}
