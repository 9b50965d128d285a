// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

class KelvoGeneralSourcePlaylist;
class KelvoRegistry;
class KelvoRenderer;

/// What a command takes in a scenario.
struct Parameter
{
    enum Kind {
        MediumName, ///< of a medium of the scenario ("$song"), or an address
        PlaylistName, ///< of a playlist of the scenario, or "none"
        Seconds, ///< whole; also "random 0..25"
        Index, ///< from 0
        Word, ///< one of `words`
        Text,
        Properties, ///< all of the map: names and values
    };

    QString name;
    Kind kind = Text;
    QStringList words = {};
    QString otherwise = {}; ///< where it is left out; empty: it must be there
};

/// What commands act on. The objects are there.
class Stage
{
public:
    virtual ~Stage() = default;
    virtual KelvoRegistry &registry() = 0;
    virtual KelvoRenderer &renderer() = 0;
    virtual KelvoGeneralSourcePlaylist &playlist(const QString &name) = 0;
    virtual QUrl url(const QString &medium) = 0;
};

/// A step that acts, by the name that the boundary has for it.
struct Command
{
    QString name;
    QList<Parameter> parameters;
    void (*run)(Stage &stage, const QVariantMap &arguments);
    bool isOfRenderer = true; ///< needs one that is there

    static const QList<Command> &all();
    /// Null where there is none.
    static const Command *find(const QString &name);
    static QStringList names();
};
