// SPDX-License-Identifier: MIT
// Events of a renderer of the network, and what is read out of their values.
#include "FuzzSupport.h"
#include "LastChange.h"
#include "UpnpText.h"

#include <cmath>

namespace {
void readValue(const QString &text)
{
    UpnpText::parseActions(text);
    UpnpText::parseState(text);
    UpnpText::isSameUri(text, QStringLiteral("http://host/song.mp3"));
    UpnpText::nearestSpeed(text.split(QLatin1Char(',')), 2);
    if (const auto speed = UpnpText::parseSpeed(text))
        Fuzz::require(std::isfinite(*speed) && *speed != 0);
    if (const auto time = UpnpText::parseTime(text))
        Fuzz::require(*time >= 0 && UpnpText::parseTime(UpnpText::formatTime(*time)));
    const int volume = UpnpText::fromDeviceVolume(text.toInt(), 0, 100);
    Fuzz::require(volume >= 0 && volume <= 99);
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const Upnp::Report report = LastChange::parse(Fuzz::bytes(data, size));
    for (const QString &text : report.values) {
        Fuzz::require(Fuzz::isClean(text));
        readValue(text);
    }
    return 0;
}
