// SPDX-License-Identifier: MIT
// The properties of a player of the desktop, of any types.
#include "FuzzSupport.h"
#include "MprisSnapshot.h"

#include <QDBusObjectPath>
#include <QDBusVariant>

#include <cmath>

#include <fuzzer/FuzzedDataProvider.h>

namespace {
constexpr const char *propertyNames[] = {"Metadata", "PlaybackStatus", "Position", "Rate", "MinimumRate",
    "MaximumRate", "Volume", "CanControl", "CanSeek", "CanPause"};
constexpr const char *metadataNames[] = {"mpris:trackid", "xesam:url", "xesam:title", "xesam:artist",
    "xesam:album", "xesam:genre", "mpris:artUrl", "mpris:length"};

QString textOf(FuzzedDataProvider &data)
{
    return QString::fromStdString(data.ConsumeRandomLengthString(64));
}

QVariantMap metadataOf(FuzzedDataProvider &data, int depth);

QVariant valueOf(FuzzedDataProvider &data, int depth)
{
    switch (data.ConsumeIntegralInRange(0, depth > 3 ? 10 : 12)) {
    case 0:
        return {};
    case 1:
        return data.ConsumeBool();
    case 2:
        return data.ConsumeIntegral<int>();
    case 3:
        return data.ConsumeIntegral<qlonglong>();
    case 4:
        return data.ConsumeIntegral<qulonglong>();
    case 5: {
        const auto bits = data.ConsumeIntegral<quint64>();
        double number = 0;
        memcpy(&number, &bits, sizeof number);
        return number;
    }
    case 6:
        return textOf(data);
    case 7:
        return QStringList{textOf(data), QString(), textOf(data)};
    case 8:
        return QVariant::fromValue(QDBusObjectPath(textOf(data)));
    case 9:
        return QVariant::fromValue(data.ConsumeIntegral<uchar>());
    case 10:
        return textOf(data).toUtf8();
    case 11:
        return QVariant::fromValue(QDBusVariant(valueOf(data, depth + 1)));
    default:
        return metadataOf(data, depth + 1);
    }
}

QVariantMap metadataOf(FuzzedDataProvider &data, int depth)
{
    QVariantMap metadata;
    for (const char *name : metadataNames) {
        if (data.ConsumeBool())
            metadata.insert(QLatin1String(name), valueOf(data, depth));
    }
    return metadata;
}

MprisSnapshot snapshotOf(FuzzedDataProvider &data)
{
    QVariantMap properties;
    for (const char *name : propertyNames) {
        if (data.ConsumeBool())
            properties.insert(QLatin1String(name), valueOf(data, 0));
    }
    if (data.ConsumeBool())
        properties.insert(QStringLiteral("Metadata"), metadataOf(data, 0));
    return MprisSnapshot::of(properties);
}

void check(const MprisSnapshot &snapshot)
{
    Fuzz::require(!snapshot.position || (*snapshot.position >= 0 && *snapshot.position < 4e8));
    Fuzz::require(!snapshot.rate || (std::isfinite(*snapshot.rate) && *snapshot.rate != 0));
    Fuzz::require(snapshot.minimumRate <= 1 && snapshot.maximumRate >= 1);
    Fuzz::require(
        !snapshot.volume || (*snapshot.volume >= 0 && *snapshot.volume <= MprisValues::maximumVolume));
    Fuzz::require(snapshot.track.length == -1 || (snapshot.track.length > 0 && snapshot.track.length < 4e8));
    Fuzz::require(snapshot.track.isSameAs(snapshot.track));
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    FuzzedDataProvider data(bytes, size);
    const MprisSnapshot before = snapshotOf(data);
    const MprisSnapshot now = snapshotOf(data);
    check(before);
    check(now);
    Fuzz::require(!now.hasAdvancedSince(now));
    now.hasAdvancedSince(before);
    MprisTrack::isSameAddress(before.track.url, now.track.url);
    return 0;
}
