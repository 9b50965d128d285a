// SPDX-License-Identifier: MIT
#pragma once

#include "ComparedRun.h"

#include <QHash>

#include <optional>

/// What is different between two runs of one scenario: what came in another order, later, earlier, only once, or with
/// another value.
///
/// The commands of the scenario are what the two have in common: a report is compared with its counterpart after the
/// same command, and its time is counted from there, so that what is late once does not make all that follows late.
/// Before the first command, time is counted from the first event of the run.
/// Commands are not late themselves: when they come is the scenario's business. Objects are compared one by one, those
/// with the same uuid with each other and the others by the order of their first commands.
class RunComparison
{
public:
    /// What counts as the same.
    struct Tolerance
    {
        /// Seconds that a report may come later or earlier,
        double time = 0.25;
        /// or this part of the time since its command, if that is more.
        double share = 0.1;
        /// Seconds apart within which two reports may change places.
        double order = 0.05;
    };

    enum class Kind { Missing, Additional, Later, Earlier, OtherOrder, OtherValue };

    struct Difference
    {
        Kind kind = Kind::Missing;
        QString sentence;
        /// When it was in each run, and the number of the event there; nothing where it did not come.
        std::optional<double> firstTime;
        std::optional<double> secondTime;
        qint64 firstEvent = -1;
        qint64 secondEvent = -1;
    };

    /// More differences than this are counted, but not kept.
    static constexpr qsizetype MostDifferences = 1000;

    RunComparison(const ComparedRun &first, const ComparedRun &second, const Tolerance &tolerance);
    RunComparison(const ComparedRun &first, const ComparedRun &second);

    /// By the time in the first run; what came only in the second where it came there.
    QList<Difference> differences() const { return m_differences; }
    qint64 count() const { return m_count; }

private:
    using Event = ComparedRun::Event;
    using Object = ComparedRun::Object;
    /// A report and its counterpart.
    struct Pair
    {
        const Event *first = nullptr;
        const Event *second = nullptr;
    };
    /// The reports after one command, until the next that both runs have.
    struct Section
    {
        /// Null before the first.
        const Event *firstCommand = nullptr;
        const Event *secondCommand = nullptr;
        QList<const Event *> first;
        QList<const Event *> second;
    };
    /// A report that has no counterpart after its own command.
    struct Single
    {
        const Event *event = nullptr;
        const Section *section = nullptr;
    };

    void compareObjects(const Object &first, const Object &second);
    QList<Section> sectionsOf(const Object &first, const Object &second);
    void compareSection(const Section &section, QList<Single> *onlyFirst, QList<Single> *onlySecond);
    void compareOrder(const QList<Pair> &pairs, QList<bool> *isMoved);
    void comparePair(const Pair &pair, const Section &section, bool isMoved);
    void compareSingles(const QList<Single> &onlyFirst, const QList<Single> &onlySecond);
    void addCommand(const Event &command, bool isFirst);
    void add(Kind kind, const Event *first, const Event *second, const QString &what);

    const Tolerance m_tolerance;
    /// Seconds: when the first event of each run came.
    const double m_firstBegin;
    const double m_secondBegin;
    QString m_prefix;
    /// Of each report of the two objects that are compared: the last command before it.
    QHash<const Event *, const Event *> m_commands;
    QList<Difference> m_differences;
    qint64 m_count = 0;
};
