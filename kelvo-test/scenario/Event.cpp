// SPDX-License-Identifier: MIT
#include "Event.h"

#include "KelvoContent.h"

#include <QMetaEnum>
#include <QStringList>
#include <QUrl>

#include <algorithm>

namespace {
QString stateText(KelvoRenderer::State state)
{
    return QString::fromLatin1(QMetaEnum::fromType<KelvoRenderer::State>().valueToKey(state));
}

QString argumentText(const QVariant &argument)
{
    constexpr int longest = 200;
    if (argument.canConvert<KelvoRenderer::State>()
        && argument.metaType() == QMetaType::fromType<KelvoRenderer::State>())
        return stateText(argument.value<KelvoRenderer::State>());
    if (argument.typeId() == QMetaType::QUrl)
        return argument.toUrl().toDisplayString();
    if (argument.typeId() == QMetaType::QVariantList || argument.typeId() == QMetaType::QStringList) {
        QStringList texts;
        for (const QVariant &value : argument.toList())
            texts.append(argumentText(value));
        return u'[' + texts.join(QStringLiteral(", ")) + u']';
    }
    const QString text = argument.toString();
    if (text.isEmpty() && argument.typeId() != QMetaType::QString)
        return argument.isValid() ? u'(' + QString::fromLatin1(argument.typeName()) + u')'
                                  : QStringLiteral("nothing");
    return text.size() > longest ? text.left(longest) + u'…' : text;
}
} // namespace

QString Event::text() const
{
    static constexpr const char *kinds[]
        = {"command", "report", "request", "appears", "vanishes", "heard", "seen"};
    QStringList words;
    for (const QVariant &argument : arguments)
        words.append(argumentText(argument));
    const QString which = renderer > 0 ? QStringLiteral(" [%1]").arg(renderer + 1) : QString();
    QString text = QStringLiteral("%1 s  %2%3 %4")
                       .arg(seconds, 9, 'f', 3)
                       .arg(QLatin1String(kinds[kind]), which, name);
    if (!words.isEmpty())
        text += u' ' + words.join(QStringLiteral(", "));
    return text;
}

void Observation::beginCommand()
{
    errors.clear();
    completed = 0;
}

void Observation::take(const Event &event)
{
    const QVariantList &arguments = event.arguments;
    if (event.kind == Event::Appears || event.kind == Event::Vanishes) {
        const HeardSound stillHeard = heard;
        const SeenPicture stillSeen = seen;
        *this = Observation();
        heard = stillHeard;
        seen = stillSeen;
        there = event.kind == Event::Appears;
    } else if (event.name == QLatin1String("stateChanged")) {
        state = arguments.value(0).value<KelvoRenderer::State>();
    } else if (event.name == QLatin1String("mediaChanged")) {
        index = arguments.value(0).toInt();
        item = arguments.value(1).toString();
        metadata.clear();
    } else if (event.name == QLatin1String("metadataChanged")) {
        metadata.insert(arguments.value(0).toString(), arguments.value(1).toList());
    } else if (event.name == QLatin1String("kelvoPropertyChanged")) {
        properties.insert(arguments.value(0).toString(), arguments.value(1));
    } else if (event.name == QLatin1String("error")) {
        if (errors.size() < MostErrors)
            errors.append(arguments.value(0).toInt());
    } else if (event.name == QLatin1String("playbackCompleted")) {
        ++completed;
    }
}

QString Observation::text() const
{
    if (!there)
        return QStringLiteral("the renderer is gone");
    QStringList words{QStringLiteral("state ") + stateText(state)};
    if (!item.isEmpty())
        words.append(QStringLiteral("item ") + item
            + (index >= 0 ? QStringLiteral(" (index %1)").arg(index) : QString()));
    if (position)
        words.append(QStringLiteral("position %1 s").arg(*position));
    for (const int code : errors.mid(0, 3))
        words.append(QStringLiteral("error %1").arg(code));
    if (completed > 0)
        words.append(QStringLiteral("completed"));
    if (heard.isListening())
        words.append(heard.text());
    if (seen.isLooking())
        words.append(seen.text());
    return words.join(QStringLiteral(", "));
}

void EventLog::add(const Event &event)
{
    m_events.push_back(event);
    m_marked = std::min(m_marked + 1, Capacity);
    if (m_events.size() > Capacity)
        m_events.pop_front();
}

QStringList EventLog::last(int count) const
{
    QStringList texts;
    const size_t first = m_events.size() - std::min(m_events.size(), size_t(count));
    for (size_t i = first; i < m_events.size(); ++i)
        texts.append(m_events[i].text());
    return texts;
}
