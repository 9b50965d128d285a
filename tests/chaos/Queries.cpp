// SPDX-License-Identifier: MIT
#include "Queries.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QComboBox>
#include <QListView>

namespace {
constexpr const char *queryButtons[] = {
    "m_query_executeButton",
    "m_query_executeButton",
    "m_query_executeButton",
    "m_query_executeButton",
    "m_query_extendButton",
    "m_query_addButton",
    "m_query_addButton",
    "m_query_createPlaylistButton",
    "m_browse_executeButton",
    "m_browse_clearButton",
    "m_browse_addButton",
    "m_browse_metadataButton",
};
/// Milliseconds.
constexpr double longestQuery = 5000;
} // namespace

Queries::Queries(const Stage &stage)
    : m_stage(stage)
{
}

QList<Deed> Queries::deeds()
{
    return {
        {7, Deed::AtTheWindow, std::bind_front(&Queries::press, this)},
        {3, Deed::AtTheWindow, std::bind_front(&Queries::chooseQuery, this)},
        {2, Deed::AtTheWindow, std::bind_front(&Queries::chooseResult, this)},
    };
}

void Queries::press(Dice &dice) const
{
    const char *name = dice.oneOf(queryButtons);
    m_stage.say(QStringLiteral("press %1").arg(QLatin1String(name)));
    m_stage.find<QAbstractButton>(name)->click();
}

void Queries::chooseQuery(Dice &dice) const
{
    auto *box = m_stage.find<QComboBox>("m_query_queryCombo");
    const int row = dice.below(box->count());
    m_stage.say(QStringLiteral("query \"%1\"").arg(box->itemText(row)));
    box->setCurrentIndex(row);
    m_stage.find<QAbstractButton>("m_query_executeButton")->click();
}

void Queries::chooseResult(Dice &dice) const
{
    auto *view = m_stage.find<QListView>("m_query_resultsView");
    const int number = dice.below(1000);
    const int rows = view->model() ? view->model()->rowCount() : 0;
    if (rows == 0)
        return m_stage.say(QStringLiteral("no result to choose"));
    m_stage.say(QStringLiteral("choose result %1").arg(number % rows));
    view->setCurrentIndex(view->model()->index(number % rows, 1));
}

QStringList Queries::faults()
{
    const bool runs
        = m_stage.find<QAbstractButton>("m_query_executeButton")->text() == QLatin1String("Cancel");
    if (!runs)
        m_runningSince = 0;
    else if (m_runningSince == 0)
        m_runningSince = m_stage.meter.now();
    else if (m_stage.meter.now() - m_runningSince > longestQuery)
        return {QStringLiteral("the query does not end")};
    return {};
}
