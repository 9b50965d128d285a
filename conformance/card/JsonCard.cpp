// SPDX-License-Identifier: MIT
#include "JsonCard.h"

#include "Card.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
// Of the format: readers refuse another.
constexpr int version = 1;

QJsonObject jsonHead(const CardHead &head)
{
    return {
        {"name", head.renderer},
        {"uuid", head.uuid},
        {"back-end", head.backEnd},
        {"round-trip", double(head.roundTrip) / 1000},
    };
}

QJsonObject jsonCounts(const Card &card)
{
    QJsonObject counts;
    for (Verdict verdict : allVerdicts())
        counts.insert(keyOf(verdict), card.count(verdict));
    return counts;
}

QJsonObject jsonEvidence(const Counterexample &evidence)
{
    QJsonArray events;
    for (const HeardEvent &event : evidence.lastEvents())
        events.append(QJsonObject{{"time", double(event.time) / 1000}, {"event", event.text}});
    return {
        {"expected", evidence.expected},
        {"came", evidence.came},
        {"where", evidence.where},
        {"violations", QJsonArray::fromStringList(evidence.violations)},
        {"events", events},
    };
}

QJsonObject jsonResult(const Result &result)
{
    QJsonArray needs;
    for (Ability ability : result.needs)
        needs.append(nameOf(ability));
    QJsonObject object{
        {"id", result.id},
        {"statement", result.sentence},
        {"needs", needs},
        {"verdict", keyOf(result.verdict)},
        {"seconds", double(result.milliseconds) / 1000},
    };
    if (!result.reason.isEmpty())
        object.insert("reason", result.reason);
    if (result.verdict == Verdict::DoesNotHold || result.verdict == Verdict::Overclaimed)
        object.insert("evidence", jsonEvidence(result.evidence));
    return object;
}

QJsonObject jsonSenseRow(const SenseRow &row)
{
    const auto number = [](const std::optional<double> &value) {
        return value ? QJsonValue(*value) : QJsonValue();
    };
    QJsonObject object{
        {"id", row.id},
        {"what", row.what},
        {"unit", row.unit},
        {"said", number(row.said)},
        {"came-out", number(row.cameOut)},
        {"error", row.error},
        {"limit", row.limit},
        {"off", row.isOff()},
    };
    if (!row.doubt.isEmpty())
        object.insert("doubt", row.doubt);
    return object;
}
} // namespace

QByteArray toJson(const Card &card)
{
    QJsonArray results;
    for (const Result &result : card.results())
        results.append(jsonResult(result));
    QJsonArray senseRows;
    for (const SenseRow &row : card.senseRows())
        senseRows.append(jsonSenseRow(row));
    QJsonObject object{
        {"kelvo-conformance", version},
        {"program", card.head().program},
        {"when", card.head().when.toUTC().toString(Qt::ISODate)},
        {"media", card.head().media},
        {"renderer", jsonHead(card.head())},
        {"counts", jsonCounts(card)},
        {"results", results},
    };
    if (!senseRows.isEmpty())
        object.insert("came-out", senseRows);
    return QJsonDocument(object).toJson();
}
