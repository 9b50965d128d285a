// SPDX-License-Identifier: MIT
#include "MprisSnapshot.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <algorithm>
#include <cmath>

namespace {
constexpr qsizetype maximumText = 4096;
// Ten years: what is longer is a mistake, and would not fit the types on the way.
constexpr double maximumSeconds = 3e8;

QVariant unwrapped(const QVariant &value)
{
    return value.typeId() == qMetaTypeId<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
}

bool isTrue(const QVariant &value)
{
    // Only a player that says so cannot do it.
    return value.typeId() != QMetaType::Bool || value.toBool();
}

KelvoRenderer::State playbackStatusOf(const QVariant &value)
{
    const QString name = value.toString();
    if (name.compare(QLatin1String("Playing"), Qt::CaseInsensitive) == 0)
        return KelvoRenderer::Playing;
    if (name.compare(QLatin1String("Paused"), Qt::CaseInsensitive) == 0)
        return KelvoRenderer::Paused;
    return KelvoRenderer::Stopped;
}

QString pathOf(const QVariant &value)
{
    return value.typeId() == qMetaTypeId<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path()
                                                            : MprisValues::text(value);
}

/// What mpv says to have nothing to play.
constexpr QLatin1String emptied{"/noplaylist"};

/// What players say to have nothing to play.
bool isNoTrack(const QString &id)
{
    return id.endsWith(QLatin1String("/NoTrack")) || id == emptied;
}

QUrl addressOf(const QString &text)
{
    return text.startsWith(QLatin1Char('/')) ? QUrl::fromLocalFile(text) : QUrl(text);
}

/// Whatever needs no escape, or does, in plain.
QByteArray plain(const QUrl &url)
{
    QUrl address = url.adjusted(QUrl::NormalizePathSegments);
    if (address.isLocalFile() && address.host() == QLatin1String("localhost"))
        address.setHost({});
    return QByteArray::fromPercentEncoding(address.toEncoded());
}

QString idOf(const QVariant &value)
{
    const QString id = pathOf(value);
    return isNoTrack(id) || !id.startsWith(QLatin1Char('/')) ? QString() : id;
}
} // namespace

bool MprisTrack::isSameAs(const MprisTrack &other) const
{
    if (!url.isEmpty() && !other.url.isEmpty())
        return isSameAddress(url, other.url);
    return id == other.id && (!id.isEmpty() || title == other.title);
}

bool MprisTrack::isSameAddress(const QUrl &one, const QUrl &other)
{
    return one == other || plain(one) == plain(other);
}

MprisTrack MprisTrack::of(const QVariantMap &metadata)
{
    MprisTrack track;
    track.id = idOf(unwrapped(metadata.value(QStringLiteral("mpris:trackid"))));
    track.url = addressOf(MprisValues::text(metadata.value(QStringLiteral("xesam:url"))));
    track.title = MprisValues::text(metadata.value(QStringLiteral("xesam:title")));
    track.artist = MprisValues::text(metadata.value(QStringLiteral("xesam:artist")));
    track.album = MprisValues::text(metadata.value(QStringLiteral("xesam:album")));
    track.genre = MprisValues::text(metadata.value(QStringLiteral("xesam:genre")));
    track.cover = MprisValues::text(metadata.value(QStringLiteral("mpris:artUrl")));
    const auto length = MprisValues::seconds(metadata.value(QStringLiteral("mpris:length")));
    track.length = length && *length > 0 ? *length : -1;
    return track;
}

MprisSnapshot MprisSnapshot::of(const QVariantMap &properties)
{
    const auto property = [&properties](const char *name) {
        return unwrapped(properties.value(QLatin1String(name)));
    };
    MprisSnapshot now;
    const QVariantMap metadata = MprisValues::map(property("Metadata"));
    const QString id = pathOf(unwrapped(metadata.value(QStringLiteral("mpris:trackid"))));
    now.track = MprisTrack::of(metadata);
    now.isEmptied = id == emptied;
    // mpv may say after its start that it plays although it has nothing, until it is given something.
    now.playbackStatus
        = isNoTrack(id) ? KelvoRenderer::Stopped : playbackStatusOf(property("PlaybackStatus"));
    now.position = MprisValues::seconds(property("Position"));
    if (now.position)
        now.position = std::max(0.0, *now.position);
    const auto rate = MprisValues::number(property("Rate"));
    if (rate && *rate != 0)
        now.rate = rate;
    const double minimum = MprisValues::number(property("MinimumRate")).value_or(1);
    const double maximum = MprisValues::number(property("MaximumRate")).value_or(1);
    if (minimum <= 1 && maximum >= 1) {
        now.minimumRate = minimum;
        now.maximumRate = maximum;
    }
    if (const auto volume = MprisValues::number(property("Volume")))
        now.volume = MprisValues::volumeOfShare(*volume);
    now.canControl = isTrue(property("CanControl"));
    now.canSeek = isTrue(property("CanSeek"));
    now.canPause = isTrue(property("CanPause"));
    return now;
}

bool MprisSnapshot::hasAdvancedSince(const MprisSnapshot &before) const
{
    return position && before.position && track.isSameAs(before.track) && *position > *before.position;
}

std::optional<double> MprisValues::number(const QVariant &wrapped)
{
    const QVariant value = unwrapped(wrapped);
    bool ok = false;
    double number = 0;
    switch (value.typeId()) {
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::QString:
        number = value.toDouble(&ok);
        break;
    default:
        break;
    }
    return ok && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

std::optional<double> MprisValues::seconds(const QVariant &value)
{
    const auto time = number(value);
    return time && std::abs(*time) < maximumSeconds * 1e6 ? std::optional<double>(*time / 1e6) : std::nullopt;
}

qlonglong MprisValues::microseconds(double seconds)
{
    return std::llround(std::clamp(seconds, 0.0, maximumSeconds) * 1e6);
}

QString MprisValues::text(const QVariant &wrapped)
{
    const QVariant value = unwrapped(wrapped);
    QString text;
    if (value.typeId() == QMetaType::QString) {
        text = value.toString();
    } else if (value.typeId() == QMetaType::QStringList) {
        QStringList parts = value.toStringList();
        parts.removeAll(QString());
        text = parts.mid(0, 100).join(QLatin1String(", "));
    }
    return text.left(maximumText);
}

QVariantMap MprisValues::map(const QVariant &wrapped)
{
    const QVariant value = unwrapped(wrapped);
    if (value.typeId() == QMetaType::QVariantMap)
        return value.toMap();
    if (value.typeId() != qMetaTypeId<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    return argument.currentSignature() == QLatin1String("a{sv}") ? qdbus_cast<QVariantMap>(argument)
                                                                 : QVariantMap();
}

double MprisValues::shareOfVolume(int volume)
{
    return double(volume) / maximumVolume;
}

int MprisValues::volumeOfShare(double share)
{
    return int(std::lround(std::clamp(share, 0.0, 1.0) * maximumVolume));
}
