// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoMediaInfo.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include <functional>
#include <optional>

/// Plain values that go between the UPnP thread and the GUI thread.
namespace Upnp {

enum class Kind { Renderer, Source };

/// Which device is meant: the same one may have both kinds.
struct DeviceKey
{
    Kind kind = Kind::Renderer;
    QString udn;

    friend bool operator==(const DeviceKey &, const DeviceKey &) = default;
};

inline size_t qHash(const DeviceKey &key, size_t seed = 0)
{
    return ::qHash(key.udn, seed + size_t(key.kind));
}

/// What a device tells of itself in its description.
struct Description
{
    DeviceKey key;
    QString name; ///< never empty
    QUrl address; ///< where it says so
    QHash<QString, QVariant> properties; ///< only those that it has
};

enum class Service { AVTransport, RenderingControl, ContentDirectory, ConnectionManager };

/// One action of a service.
struct Call
{
    Service service = Service::AVTransport;
    QByteArray action;
    /// "CurrentURI" may be that of a file of this computer: the device is given an address that it can fetch it from,
    /// which the answer holds under the same name.
    QList<QPair<QByteArray, QString>> in;
    QList<QByteArray> out; ///< names of the results that are wanted
    /// With an argument "CurrentURI": "CurrentURIMetaData" is made of this.
    std::optional<KelvoMediaInfo> media = {};
    int timeout = 3000; ///< milliseconds
};

/// A DIDL-Lite item, as far as a renderer's report needs it. Unknown texts are empty.
struct Track
{
    QString title;
    QString artist;
    QString album;
    QString genre;
    QString cover; ///< address of a picture, as the device wrote it
    QString mimeType;
    double duration = -1; ///< seconds
};

/// What became of a call.
struct Answer
{
    enum Outcome {
        Done,
        Refused, ///< by the device, with code and message
        TimedOut,
        Unreachable, ///< no connection, or it was lost
        Missing, ///< the device has no such service, or is gone
    };

    Outcome outcome = Done;
    int code = 0; ///< of a refusal; 0: the device gave none that could be understood
    QString message; ///< in the words of the device or the library
    QHash<QByteArray, QString> values;
    std::optional<Track> track; ///< of a result that is metadata

    /// Whether the device showed that it is alive.
    bool isFromDevice() const { return outcome == Done || outcome == Refused; }
};
using AnswerHandler = std::function<void(const Answer &)>;

/// News of a renderer: state variables by name, only those that changed.
struct Report
{
    QHash<QByteArray, QString> values = {};
    std::optional<Track> track = {};
    bool isUnreadable = false; ///< something changed, but the device could not say what
};

/// What a renderer's services can do, by their own description.
struct RendererLimits
{
    QSet<QByteArray> actions; ///< empty: not known
    QStringList speeds; ///< allowed values of TransportPlaySpeed; empty: not said
    int lowestVolume = 0;
    int highestVolume = 100;
};

} // namespace Upnp
