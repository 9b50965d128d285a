// SPDX-License-Identifier: MIT
#include "Simulators.h"

#include "KelvoRenderer.h"
#include "KelvoRendererController.h"

namespace {
using Setting = std::pair<QString, QVariant>;

Setting someSetting(Dice &dice)
{
    switch (dice.below(12)) {
    case 0:
        return {"sim-latency", dice.oneOf(std::initializer_list<int>{0, 0, 0, 20, 150, 400})};
    case 1:
        return {"sim-failure", QStringLiteral("%1,%2").arg(dice.between(100, 109)).arg(dice.below(4))};
    case 2:
        return {"sim-error", QStringLiteral("%1,told by the tester").arg(dice.between(1, 402))};
    case 3:
        return {"sim-buffering", dice.oneOf(std::initializer_list<int>{0, 0, 30, 300})};
    case 4:
        return {"sim-stall", dice.chance(30)};
    case 5:
        return {"sim-name", dice.chance(20) ? QString() : QStringLiteral("Name %1").arg(dice.below(50))};
    case 6:
        return {"sim-duration", dice.oneOf(std::initializer_list<int>{0, 1, 2, 30, 3600, 50'000})};
    case 7:
        return {"sim-seekable", dice.chance(70)};
    case 8:
        return {"sim-metadata", QStringLiteral("genre=<i>%1</i>").arg(dice.below(5))};
    case 9:
        return {"policy-override", dice.chance(50)};
    case 10:
        return {"colorkey", uint(dice.below(0xFFFFFF))};
    default:
        return {"sim-foreign",
            dice.oneOf(std::initializer_list<QString>{
                "pause", "resume", "stop", "sim:elsewhere?duration=9", "sim:elsewhere?fail=100"})};
    }
}
} // namespace

Simulators::Simulators(const Stage &stage)
    : m_stage(stage)
{
}

QList<Deed> Simulators::deeds()
{
    return {
        {12, Deed::Elsewhere, std::bind_front(&Simulators::trouble, this)},
        {3, Deed::Elsewhere, std::bind_front(&Simulators::vanish, this)},
    };
}

KelvoRenderer *Simulators::any(Dice &dice) const
{
    QList<KelvoRenderer *> all = m_stage.registry()->renderers();
    all.removeIf([](KelvoRenderer *renderer) { return !renderer->uuid().startsWith("KelvoSimulator"); });
    const int number = dice.below(1000);
    const bool chosen = dice.chance(60);
    KelvoRenderer *current = m_stage.console.application()->renderers()->currentRenderer();
    if (chosen && all.contains(current))
        return current;
    return all.isEmpty() ? nullptr : all.at(number % all.size());
}

void Simulators::trouble(Dice &dice) const
{
    KelvoRenderer *renderer = any(dice);
    const auto [name, value] = someSetting(dice);
    if (!renderer)
        return m_stage.say(QStringLiteral("no simulator"));
    m_stage.say(QStringLiteral("%1: %2 = %3").arg(renderer->uuid(), name, value.toString()));
    renderer->setKelvoProperty(name, value);
}

void Simulators::vanish(Dice &dice) const
{
    KelvoRenderer *renderer = any(dice);
    const int back = dice.oneOf(std::initializer_list<int>{0, 1, 50, 300, 800});
    if (!renderer)
        return m_stage.say(QStringLiteral("no simulator"));
    m_stage.say(QStringLiteral("%1 vanishes for %2 ms").arg(renderer->uuid()).arg(back));
    renderer->setKelvoProperty(QStringLiteral("sim-vanish"), back);
}
