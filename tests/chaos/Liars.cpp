// SPDX-License-Identifier: MIT
#include "Liars.h"

#include "Onlooker.h"

namespace {
constexpr size_t mostLiars = 3;
}

Liars::Liars(const Stage &stage)
    : m_stage(stage)
{
}

Liars::~Liars() = default;

QList<Deed> Liars::deeds()
{
    return {
        {2, Deed::Elsewhere, std::bind_front(&Liars::come, this)},
        {2, Deed::Elsewhere, std::bind_front(&Liars::go, this)},
        {8, Deed::Elsewhere, std::bind_front(&Liars::lie, this)},
    };
}

void Liars::come(Dice &dice)
{
    if (m_liars.size() >= mostLiars)
        return m_stage.say(QStringLiteral("liars enough"));
    const QString uuid = Onlooker::liarPrefix + QString::number(++m_number);
    const QString name = dice.chance(20) ? QString() : QStringLiteral("Liar %1").arg(m_number);
    m_stage.say(QStringLiteral("%1 comes").arg(uuid));
    m_liars.push_back(std::make_unique<LyingRenderer>(uuid, name, quint64(dice.below(1 << 30))));
    m_stage.registry()->addRenderer(m_liars.back().get());
}

void Liars::go(Dice &dice)
{
    const int number = dice.below(1000);
    const bool withoutAWord = dice.chance(30);
    if (m_liars.empty())
        return m_stage.say(QStringLiteral("no liar"));
    const auto place = m_liars.begin() + number % int(m_liars.size());
    const auto liar = std::move(*place);
    m_liars.erase(place);
    m_stage.say(QStringLiteral("%1 goes").arg(liar->uuid()));
    if (!withoutAWord) // otherwise it is just deleted
        m_stage.registry()->removeRenderer(liar.get());
}

void Liars::lie(Dice &dice) const
{
    const int number = dice.below(1000);
    const int deed = dice.below(100);
    const int times = dice.between(1, 30);
    if (m_liars.empty())
        return m_stage.say(QStringLiteral("no liar"));
    LyingRenderer *liar = m_liars.at(size_t(number) % m_liars.size()).get();
    if (deed < 5) {
        m_stage.say(QStringLiteral("%1 hangs").arg(liar->uuid()));
        liar->hang();
    } else if (deed < 20) {
        m_stage.say(QStringLiteral("%1 answers late").arg(liar->uuid()));
        liar->answerLate();
    } else {
        m_stage.say(QStringLiteral("%1 lies %2 times").arg(liar->uuid()).arg(times));
        for (int i = 0; i < times; ++i)
            liar->lie();
    }
}

void Liars::end()
{
    while (!m_liars.empty()) {
        m_stage.registry()->removeRenderer(m_liars.back().get());
        m_liars.pop_back();
    }
}
