// SPDX-License-Identifier: MIT
#include "ConditionReader.h"

#include "EarConditionReader.h"
#include "EyeConditionReader.h"
#include "MediaReader.h"
#include "Spelling.h"
#include "YamlNode.h"

#include <QMetaEnum>

#include <algorithm>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds usualTime = 5s;
constexpr int mostReports = 1'000'000;
constexpr int highestItem = 1'000'000;

/// What the renderer says.
const QStringList &toldKeys()
{
    static const QStringList keys{QStringLiteral("state"), QStringLiteral("item"), QStringLiteral("index"),
        QStringLiteral("position"), QStringLiteral("property"), QStringLiteral("metadata"),
        QStringLiteral("error"), QStringLiteral("completed"), QStringLiteral("there")};
    return keys;
}

const QStringList &conditionKeys()
{
    static const QStringList keys = toldKeys() + EarConditionReader::keys() + EyeConditionReader::keys();
    return keys;
}

KelvoRenderer::State stateOf(const YamlNode &node)
{
    const QMetaEnum states = QMetaEnum::fromType<KelvoRenderer::State>();
    QStringList names;
    for (int i = 0; i < states.keyCount(); ++i)
        names.append(QString::fromLatin1(states.key(i)));
    return KelvoRenderer::State(states.keyToValue(qPrintable(node.word(names))));
}

int errorOf(const YamlNode &node)
{
    constexpr int highestCode = 9999;
    return !node.isMap() && !node.isList() && node.text() == QLatin1String("any")
        ? Condition::AnyError
        : node.integer(1, highestCode);
}

Tolerance positionOf(const YamlNode &node)
{
    const auto position = Quantities::timeWithTolerance(node.text());
    if (!position)
        node.fail(
            QStringLiteral("position takes a time such as \"3 s ± 250 ms\", not \"%1\"").arg(node.text()));
    return *position;
}

QMap<QString, QString> textsOf(const YamlNode &node)
{
    QMap<QString, QString> texts;
    for (const YamlNode &entry : node.entries())
        texts.insert(entry.name(), entry.text());
    return texts;
}

std::chrono::milliseconds timeOf(
    const YamlNode &node, const QString &key, std::chrono::milliseconds otherwise)
{
    const auto time = node.find(key);
    return time ? time->time() : otherwise;
}
} // namespace

ConditionReader::ConditionReader(const QList<Medium> &media, int renderer)
    : m_media(media)
    , m_renderer(renderer)
{
}

void ConditionReader::take(Condition &condition, const YamlNode &entry) const
{
    const QString key = entry.name();
    if (key == QLatin1String("state"))
        condition.state = stateOf(entry);
    else if (key == QLatin1String("item"))
        condition.item = MediaReader::mediumName(entry, m_media, true);
    else if (key == QLatin1String("index"))
        condition.index = entry.integer(-1, highestItem);
    else if (key == QLatin1String("position"))
        condition.position = positionOf(entry);
    else if (key == QLatin1String("property"))
        condition.properties = textsOf(entry);
    else if (key == QLatin1String("metadata"))
        condition.metadata = textsOf(entry);
    else if (key == QLatin1String("error"))
        condition.error = errorOf(entry);
    else if (key == QLatin1String("completed"))
        condition.completed = entry.word({QStringLiteral("true")}) == QLatin1String("true");
    else if (key == QLatin1String("there"))
        condition.there = entry.boolean();
    EarConditionReader::take(condition.heard, entry, m_media);
    EyeConditionReader::take(condition.seen, entry, m_media);
}

Condition ConditionReader::condition(const YamlNode &node, const QStringList &more) const
{
    Condition condition;
    condition.renderer = m_renderer;
    bool isEmpty = true;
    for (const YamlNode &entry : node.entries(conditionKeys() + more)) {
        isEmpty = isEmpty && !conditionKeys().contains(entry.name());
        take(condition, entry);
    }
    if (isEmpty)
        node.fail(QStringLiteral("%1 says nothing of: %2")
                      .arg(node.name(), conditionKeys().join(QStringLiteral(", "))));
    return condition;
}

Condition ConditionReader::report(const YamlNode &node, const QStringList &more) const
{
    Condition report = condition(node, more);
    if (!report.isReport())
        node.fail(QStringLiteral("%1 takes one report: one of %2 (not the position, which is asked for)")
                      .arg(node.name(), toldKeys().join(QStringLiteral(", "))));
    return report;
}

ExpectStep ConditionReader::expectation(const YamlNode &node) const
{
    const auto order = node.find(QStringLiteral("order"));
    if (node.find(QStringLiteral("of")))
        return count(node);
    ExpectStep step;
    step.within = timeOf(node, QStringLiteral("within"), usualTime);
    if (order) {
        node.entries({QStringLiteral("order"), QStringLiteral("within")});
        step.kind = ExpectStep::Order;
        for (const YamlNode &item : order->items())
            step.conditions.append(report(item, {}));
        if (step.conditions.isEmpty())
            order->fail(QStringLiteral("order is empty"));
        return step;
    }
    step.lasting = timeOf(node, QStringLiteral("for"), 0ms);
    step.conditions.append(condition(node, {QStringLiteral("within"), QStringLiteral("for")}));
    return step;
}

ExpectStep ConditionReader::count(const YamlNode &node) const
{
    const QStringList numbers{QStringLiteral("times"), QStringLiteral("at least"), QStringLiteral("at most")};
    node.entries(numbers + QStringList{QStringLiteral("of"), QStringLiteral("within")});
    ExpectStep step;
    step.kind = ExpectStep::Count;
    step.within = timeOf(node, QStringLiteral("within"), usualTime);
    step.conditions.append(report(*node.find(QStringLiteral("of")), {}));
    bool isGiven = false;
    for (const QString &key : numbers) {
        const auto given = node.find(key);
        if (!given)
            continue;
        isGiven = true;
        const int number = given->integer(0, mostReports);
        if (key != QLatin1String("at most"))
            step.least = number;
        if (key != QLatin1String("at least"))
            step.most = number;
    }
    if (!isGiven)
        node.fail(QStringLiteral("how many? \"of\" needs times, at least or at most"));
    return step;
}

NeverStep ConditionReader::never(const YamlNode &node) const
{
    NeverStep step;
    step.condition = report(node, {QStringLiteral("for"), QStringLiteral("until"), QStringLiteral("within")});
    step.lasting = timeOf(node, QStringLiteral("for"), 0ms);
    step.within = timeOf(node, QStringLiteral("within"), usualTime);
    if (const auto until = node.find(QStringLiteral("until")))
        step.until = condition(*until, {});
    if (step.lasting.count() > 0 && step.until)
        node.fail(QStringLiteral("never takes \"for\" or \"until\", not both"));
    return step;
}
