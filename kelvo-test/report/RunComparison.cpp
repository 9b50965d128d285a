// SPDX-License-Identifier: MIT
#include "RunComparison.h"

#include "CommonSequence.h"
#include "KelvoWords.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
using Event = ComparedRun::Event;

/// After one command more than this are not looked at for their order: each is compared with all others.
constexpr qsizetype mostMoved = 1000;

/// What is said of a report without a command before it counts from the beginning of the run.
double since(const Event *event, const Event *command, double begin)
{
    return event->time - (command ? command->time : begin);
}

QString elided(const QString &text)
{
    constexpr qsizetype longest = 120;
    return text.size() > longest ? text.left(longest - 1) + QChar(0x2026) : text;
}

QString after(const Event *command)
{
    return command ? QStringLiteral("after %1").arg(elided(command->key))
                   : QStringLiteral("before the first command");
}

/// What a time is counted from.
QString timeAfter(const Event *command)
{
    return command ? after(command) : QStringLiteral("after the beginning");
}

QList<const Event *> commandsOf(const QList<Event> &events)
{
    QList<const Event *> commands;
    for (const Event &event : events) {
        if (event.isCommand)
            commands.append(&event);
    }
    return commands;
}

QStringList keysOf(const QList<const Event *> &events)
{
    QStringList keys;
    for (const Event *event : events)
        keys.append(event->key);
    return keys;
}
} // namespace

RunComparison::RunComparison(const ComparedRun &first, const ComparedRun &second)
    : RunComparison(first, second, Tolerance())
{
}

RunComparison::RunComparison(const ComparedRun &first, const ComparedRun &second, const Tolerance &tolerance)
    : m_tolerance(tolerance)
    , m_firstBegin(first.begin())
    , m_secondBegin(second.begin())
{
    const QList<Object> firstObjects = first.objects();
    QList<Object> secondObjects = second.objects();
    QList<const Object *> others;
    for (const Object &object : firstObjects) {
        const auto same = std::find_if(secondObjects.begin(), secondObjects.end(),
            [&object](const Object &other) { return other.uuid == object.uuid; });
        if (same == secondObjects.end()) {
            others.append(&object);
        } else {
            compareObjects(object, *same);
            secondObjects.erase(same);
        }
    }
    // Only those that were told something are of the scenario.
    const auto isNotCommanded = [](const Object &object) {
        return !object.isCommanded;
    };
    secondObjects.removeIf(isNotCommanded);
    others.removeIf([](const Object *object) { return !object->isCommanded; });
    const Object none;
    for (qsizetype i = 0; i < std::max(others.size(), secondObjects.size()); ++i) {
        compareObjects(
            i < others.size() ? *others.at(i) : none, i < secondObjects.size() ? secondObjects.at(i) : none);
    }
    m_commands.clear(); // they point into copies that go now
    std::stable_sort(
        m_differences.begin(), m_differences.end(), [](const Difference &one, const Difference &other) {
            return one.firstTime.value_or(one.secondTime.value_or(0))
                < other.firstTime.value_or(other.secondTime.value_or(0));
        });
}

void RunComparison::compareObjects(const Object &first, const Object &second)
{
    const Object &known = first.events.isEmpty() ? second : first;
    m_commands.clear();
    m_prefix = known.name.isEmpty() ? known.uuid : known.name;
    QList<Single> onlyFirst;
    QList<Single> onlySecond;
    const QList<Section> sections = sectionsOf(first, second);
    for (const Section &section : sections)
        compareSection(section, &onlyFirst, &onlySecond);
    compareSingles(onlyFirst, onlySecond);
}

/// Divides the reports of both by the commands that both have, and tells which commands they have not both.
QList<RunComparison::Section> RunComparison::sectionsOf(const Object &first, const Object &second)
{
    const QList<const Event *> firstCommands = commandsOf(first.events);
    const QList<const Event *> secondCommands = commandsOf(second.events);
    QList<Section> sections(1);
    QHash<const Event *, qsizetype> beginnings;
    for (const auto &[one, other] : CommonSequence::of(keysOf(firstCommands), keysOf(secondCommands))) {
        beginnings.insert(firstCommands.at(one), sections.size());
        beginnings.insert(secondCommands.at(other), sections.size());
        sections.append(Section{firstCommands.at(one), secondCommands.at(other), {}, {}});
    }
    const auto divide = [&](const QList<Event> &events, QList<const Event *> Section::*side, bool isFirst) {
        qsizetype section = 0;
        const Event *command = nullptr;
        for (const Event &event : events) {
            section = beginnings.value(&event, section);
            if (!event.isCommand) {
                (sections[section].*side).append(&event);
                m_commands.insert(&event, command);
                continue;
            }
            command = &event;
            if (!beginnings.contains(&event))
                addCommand(event, isFirst);
        }
    };
    divide(first.events, &Section::first, true);
    divide(second.events, &Section::second, false);
    return sections;
}

void RunComparison::compareSection(
    const Section &section, QList<Single> *onlyFirst, QList<Single> *onlySecond)
{
    // The first of a kind is the counterpart of the first, the second of the second, and so on.
    QHash<QString, QList<const Event *>> waiting;
    for (const Event *event : section.second)
        waiting[event->key].append(event);
    QList<Pair> pairs;
    for (const Event *event : section.first) {
        const auto found = waiting.find(event->key);
        if (found == waiting.end() || found->isEmpty())
            onlyFirst->append(Single{event, &section});
        else
            pairs.append(Pair{event, found->takeFirst()});
    }
    QList<const Event *> left;
    for (const QList<const Event *> &events : std::as_const(waiting))
        left += events;
    std::sort(left.begin(), left.end(),
        [](const Event *one, const Event *other) { return one->event < other->event; });
    for (const Event *event : std::as_const(left))
        onlySecond->append(Single{event, &section});
    QList<bool> isMoved(pairs.size(), false);
    compareOrder(pairs, &isMoved);
    for (qsizetype i = 0; i < pairs.size(); ++i)
        comparePair(pairs.at(i), section, isMoved.at(i));
}

/// What is in no longest sequence that both have has moved, unless all that it changed places with is close by.
void RunComparison::compareOrder(const QList<Pair> &pairs, QList<bool> *isMoved)
{
    QList<qint64> places;
    for (const Pair &pair : pairs)
        places.append(pair.second->event);
    const QList<qsizetype> kept = CommonSequence::longestRising(places);
    const auto changedPlaces = [this](const Pair &one, const Pair &other) {
        const double firstGap = other.first->time - one.first->time;
        const double secondGap = other.second->time - one.second->time;
        return std::abs(firstGap) > m_tolerance.order && std::abs(secondGap) > m_tolerance.order
            && (firstGap > 0) != (secondGap > 0);
    };
    qsizetype next = 0;
    qsizetype tried = 0;
    for (qsizetype i = 0; i < pairs.size(); ++i) {
        if (next < kept.size() && kept.at(next) == i) {
            ++next;
            continue;
        }
        if (++tried > mostMoved)
            return;
        const auto other = std::find_if(kept.begin(), kept.end(),
            [&](qsizetype index) { return changedPlaces(pairs.at(i), pairs.at(index)); });
        if (other == kept.end())
            continue;
        (*isMoved)[i] = true;
        const Pair &pair = pairs.at(i);
        const Pair &reference = pairs.at(*other);
        const bool wasBefore = pair.first->time < reference.first->time;
        add(Kind::OtherOrder, pair.first, pair.second,
            QStringLiteral("%1 came %2 %3 in the first run, %4 in the second")
                .arg(elided(pair.first->key), wasBefore ? QStringLiteral("before") : QStringLiteral("after"),
                    elided(reference.first->key),
                    wasBefore ? QStringLiteral("after") : QStringLiteral("before")));
    }
}

void RunComparison::comparePair(const Pair &pair, const Section &section, bool isMoved)
{
    const double first = since(pair.first, section.firstCommand, m_firstBegin);
    const double second = since(pair.second, section.secondCommand, m_secondBegin);
    if (!isMoved
        && std::abs(second - first) > std::max(m_tolerance.time, m_tolerance.share * std::abs(first))) {
        const bool isLater = second > first;
        add(isLater ? Kind::Later : Kind::Earlier, pair.first, pair.second,
            QStringLiteral("%1 came %2 %3: %4 %5, in the second run %6")
                .arg(elided(pair.first->key), KelvoWords::seconds(std::abs(second - first)),
                    isLater ? QStringLiteral("later") : QStringLiteral("earlier"), KelvoWords::seconds(first),
                    timeAfter(section.firstCommand), KelvoWords::seconds(second)));
    }
    if (pair.first->value != pair.second->value) {
        add(Kind::OtherValue, pair.first, pair.second,
            QStringLiteral("%1 told \"%2\", in the second run \"%3\"")
                .arg(elided(pair.first->key), elided(pair.first->value), elided(pair.second->value)));
    }
}

/// What has no counterpart after its own command may have one after another.
void RunComparison::compareSingles(const QList<Single> &onlyFirst, const QList<Single> &onlySecond)
{
    QHash<QString, QList<Single>> waiting;
    for (const Single &single : onlySecond)
        waiting[single.event->key].append(single);
    for (const Single &single : onlyFirst) {
        const QString key = elided(single.event->key);
        const Event *command = m_commands.value(single.event);
        const auto found = waiting.find(single.event->key);
        if (found == waiting.end() || found->isEmpty()) {
            add(Kind::Missing, single.event, nullptr,
                QStringLiteral("%1 did not come in the second run: %2 %3 in the first")
                    .arg(key, KelvoWords::seconds(since(single.event, command, m_firstBegin)),
                        timeAfter(command)));
            continue;
        }
        const Single other = found->takeFirst();
        add(other.section > single.section ? Kind::Later : Kind::Earlier, single.event, other.event,
            QStringLiteral("%1 came %2, in the second run %3")
                .arg(key, after(command), after(m_commands.value(other.event))));
    }
    for (const Single &single : onlySecond) {
        QList<Single> &left = waiting[single.event->key];
        if (left.isEmpty() || left.constFirst().event != single.event)
            continue;
        left.removeFirst();
        const Event *command = m_commands.value(single.event);
        add(Kind::Additional, nullptr, single.event,
            QStringLiteral("%1 came only in the second run: %2 %3")
                .arg(elided(single.event->key),
                    KelvoWords::seconds(since(single.event, command, m_secondBegin)), timeAfter(command)));
    }
}

void RunComparison::addCommand(const Event &command, bool isFirst)
{
    const QString run = isFirst ? QStringLiteral("first") : QStringLiteral("second");
    add(isFirst ? Kind::Missing : Kind::Additional, isFirst ? &command : nullptr,
        isFirst ? nullptr : &command,
        QStringLiteral("command %1 was given only in the %2 run").arg(elided(command.key), run));
}

void RunComparison::add(Kind kind, const Event *first, const Event *second, const QString &what)
{
    ++m_count;
    if (m_differences.size() == MostDifferences)
        return;
    Difference difference;
    difference.kind = kind;
    difference.sentence = QStringLiteral("%1: %2.").arg(m_prefix, what);
    if (first) {
        difference.firstTime = first->time;
        difference.firstEvent = first->event;
    }
    if (second) {
        difference.secondTime = second->time;
        difference.secondEvent = second->event;
    }
    m_differences.append(difference);
}
