// SPDX-License-Identifier: MIT
#include "Players.h"

namespace {
constexpr size_t mostPlayers = 2;

/// Says something that players may not, or that does not fit what it said before.
QString contradict(FakeMprisPlayer &player, Dice &dice)
{
    switch (dice.below(9)) {
    case 0:
        player.player["PlaybackStatus"]
            = dice.oneOf(std::initializer_list<QString>{"Playing", "Paused", "Stopped", "Flying", ""});
        return QStringLiteral("status");
    case 1:
        player.player["Position"] = dice.oneOf(QList<QVariant>{
            qlonglong(-5), qlonglong(9e18), qlonglong(3'000'000), "soon", 2.5, QVariantList{}});
        return QStringLiteral("position");
    case 2:
        player.player["Rate"] = dice.oneOf(std::initializer_list<double>{0, 1, -1, 1e300});
        return QStringLiteral("rate");
    case 3:
        player.player["Volume"] = dice.oneOf(QList<QVariant>{0.0, 0.3, 1.0, 7.5, -1.0, "loud"});
        return QStringLiteral("volume");
    case 4:
        player.player["Metadata"] = FakeMprisPlayer::metadata(
            QStringLiteral("http://elsewhere/%1").arg(dice.below(5)),
            dice.oneOf(std::initializer_list<double>{0, 1, 30, 3600, -4}), QString(dice.below(300), u'x'));
        return QStringLiteral("track");
    case 5:
        for (const char *can : {"CanSeek", "CanPause", "CanControl"})
            player.player[QLatin1String(can)] = dice.chance(80);
        return QStringLiteral("abilities");
    case 6:
        player.tellSeek(qlonglong(dice.between(-5, 500)) * 1'000'000);
        return QStringLiteral("seek");
    case 7:
        player.rename(dice.chance(20) ? QString() : QStringLiteral("Player %1").arg(dice.below(9)));
        return QStringLiteral("name");
    default:
        player.onCall = dice.chance(40) ? [](const QDBusMessage &) { return true; }
                                        : std::function<bool(const QDBusMessage &)>();
        return player.onCall ? QStringLiteral("silence") : QStringLiteral("speech");
    }
}
} // namespace

Players::Players(const Stage &stage)
    : m_stage(stage)
{
}

Players::~Players() = default;

QList<Deed> Players::deeds()
{
    return {
        {3, Deed::Elsewhere,
            [this](Dice &) {
                come();
            }},
        {1, Deed::Elsewhere, std::bind_front(&Players::go, this)},
        {6, Deed::Elsewhere, std::bind_front(&Players::say, this)},
    };
}

void Players::come()
{
    if (m_players.size() >= mostPlayers)
        return m_stage.say(QStringLiteral("players enough"));
    const QString label = QStringLiteral("chaos%1").arg(++m_number);
    m_stage.say(QStringLiteral("player %1 comes").arg(label));
    // Its connection to the bus is made before it returns.
    m_stage.meter.leaveOut([&] {
        m_players.push_back(std::make_unique<FakeMprisPlayer>(label));
        m_players.back()->appear();
    });
}

void Players::go(Dice &dice)
{
    const int number = dice.below(1000);
    if (m_players.empty())
        return m_stage.say(QStringLiteral("no player"));
    m_stage.say(QStringLiteral("a player goes"));
    m_stage.meter.leaveOut([&] { m_players.erase(m_players.begin() + number % int(m_players.size())); });
}

void Players::say(Dice &dice) const
{
    const int number = dice.below(1000);
    if (m_players.empty())
        return m_stage.say(QStringLiteral("no player"));
    FakeMprisPlayer &player = *m_players.at(size_t(number) % m_players.size());
    m_stage.say(QStringLiteral("a player says %1").arg(contradict(player, dice)));
    player.change();
}

void Players::end()
{
    m_players.clear();
}
