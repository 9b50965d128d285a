// SPDX-License-Identifier: MIT
// Says that it has the interface and has not.
#include "KelvoPlugin.h"

#include <QObject>

class OtherRoot : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "metadata.json")
};

#include "OtherRoot.moc"
