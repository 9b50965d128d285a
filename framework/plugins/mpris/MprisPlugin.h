// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlugin.h"

#include <QObject>

#include <memory>

class BusConnector;
class KelvoRegistry;
class MprisBrowser;

/// Brings a renderer for each media player of the session bus, by a connection of its own.
class MprisPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "mpris.json")
    Q_INTERFACES(KelvoPlugin)
public:
    MprisPlugin();
    ~MprisPlugin() override;

    bool start(KelvoRegistry *registry, QString *error) override;
    void stop() override;

private:
    void loseBus();

    QString m_connectionName;
    std::unique_ptr<BusConnector> m_connector;
    std::unique_ptr<MprisBrowser> m_browser;
};
