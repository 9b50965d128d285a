// SPDX-License-Identifier: MIT
#include "Devices.h"

namespace {
constexpr size_t mostDevices = 2;

QString contradict(FakeUpnpDevice &device, Dice &dice)
{
    switch (dice.below(6)) {
    case 0:
        device.sendState(dice.oneOf(std::initializer_list<const char *>{
            "PLAYING", "STOPPED", "PAUSED_PLAYBACK", "TRANSITIONING", "NO_MEDIA_PRESENT", "FLYING", ""}));
        return QStringLiteral("state");
    case 1:
        device.results["RelTime"] = dice.oneOf(std::initializer_list<const char *>{
            "0:00:01", "9:99:99", "-1", "soon", "0:05:00", "NOT_IMPLEMENTED"});
        return QStringLiteral("position");
    case 2:
        device.results["TrackDuration"]
            = dice.oneOf(std::initializer_list<const char *>{"", "0:00:10", "0:00:00", "x", "99:00:00"});
        return QStringLiteral("duration");
    case 3:
        device.results["CurrentURI"]
            = dice.oneOf(std::initializer_list<const char *>{"http://elsewhere/song", "", "sim:song"});
        return QStringLiteral("address");
    case 4:
        device.sendLastChange(dice.oneOf(std::initializer_list<const char *>{
            "", "<", "<Event><InstanceID val=\"7\"/></Event>", "no XML at all"}));
        return QStringLiteral("an event that is none");
    default:
        device.announce(dice.oneOf(std::initializer_list<const char *>{"alive", "byebye", "update"}));
        return QStringLiteral("news");
    }
}
} // namespace

Devices::Devices(const Stage &stage)
    : m_stage(stage)
{
}

Devices::~Devices() = default;

QList<Deed> Devices::deeds()
{
    return {
        {3, Deed::Elsewhere, std::bind_front(&Devices::come, this)},
        {1, Deed::Elsewhere, std::bind_front(&Devices::go, this)},
        {5, Deed::Elsewhere, std::bind_front(&Devices::say, this)},
    };
}

void Devices::come(Dice &dice)
{
    const bool hasVolume = dice.chance(60);
    const bool isMute = dice.chance(20);
    const bool isSlow = dice.chance(10);
    if (m_devices.size() >= mostDevices) {
        m_stage.say(QStringLiteral("devices are announced"));
        for (const auto &device : m_devices)
            device->announce();
        return;
    }
    const QByteArray number = QByteArray::number(++m_number);
    m_stage.say(QStringLiteral("device %1 comes").arg(m_number));
    auto device = std::make_unique<FakeUpnpDevice>("uuid:chaos-" + number, "Device " + number);
    device->hasVolume = hasVolume;
    device->results["CurrentVolume"] = "30";
    device->isMute = isMute;
    device->isSlow = isSlow;
    device->answerSearches();
    device->announce();
    m_devices.push_back(std::move(device));
}

void Devices::go(Dice &dice)
{
    const int number = dice.below(1000);
    const bool takesLeave = dice.chance(50);
    if (m_devices.empty())
        return m_stage.say(QStringLiteral("no device"));
    const auto place = m_devices.begin() + number % int(m_devices.size());
    m_stage.say(QStringLiteral("a device goes"));
    if (takesLeave)
        (*place)->announce("byebye");
    m_devices.erase(place);
}

void Devices::say(Dice &dice) const
{
    const int number = dice.below(1000);
    if (m_devices.empty())
        return m_stage.say(QStringLiteral("no device"));
    m_stage.say(QStringLiteral("a device tells %1")
                    .arg(contradict(*m_devices.at(size_t(number) % m_devices.size()), dice)));
}

void Devices::end()
{
    m_devices.clear();
}
