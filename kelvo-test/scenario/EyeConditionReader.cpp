// SPDX-License-Identifier: MIT
#include "EyeConditionReader.h"

#include "ClockReader.h"
#include "YamlNode.h"

namespace {
const auto itemKey = QStringLiteral("item");
const auto frameKey = QStringLiteral("frame");
const auto positionKey = QStringLiteral("position");

Tolerance frameOf(const YamlNode &node)
{
    const auto frame = Quantities::numberWithTolerance(node.text());
    if (!frame || frame->value < 0)
        node.fail(QStringLiteral("frame takes the number of a picture such as \"75 ± 1\", not \"%1\"")
                      .arg(node.text()));
    return *frame;
}

void takeSeen(EyeCondition &condition, const YamlNode &node, const QList<Medium> &media)
{
    const std::vector<YamlNode> entries = node.entries({itemKey, frameKey, positionKey});
    for (const YamlNode &entry : entries) {
        if (entry.name() == itemKey)
            condition.item = ClockReader::itemSeenOf(entry, media);
        else if (entry.name() == frameKey)
            condition.frame = frameOf(entry);
        else
            condition.position = ClockReader::timeOf(entry);
    }
    if (entries.empty())
        node.fail(QStringLiteral("seen needs \"item\", \"frame\", \"position\" or several of them"));
}

/// "± 40 ms"; or, for those that want one ahead of the other, "20 ms ± 40 ms".
Tolerance syncOf(const YamlNode &node)
{
    const QString text = node.text().trimmed();
    const bool isBare = text.startsWith(u'±') || text.startsWith(QLatin1String("+-"));
    const auto time = Quantities::timeWithTolerance(isBare ? QStringLiteral("0 s ") + text : text);
    if (!time)
        node.fail(QStringLiteral("sync takes a time such as \"± 40 ms\", not \"%1\"").arg(node.text()));
    return *time;
}
} // namespace

const QStringList &EyeConditionReader::keys()
{
    static const QStringList keys{QStringLiteral("seen"), QStringLiteral("sync")};
    return keys;
}

void EyeConditionReader::take(EyeCondition &condition, const YamlNode &entry, const QList<Medium> &media)
{
    if (entry.name() == QLatin1String("seen"))
        takeSeen(condition, entry, media);
    else if (entry.name() == QLatin1String("sync"))
        condition.sync = syncOf(entry);
}
