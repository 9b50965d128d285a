// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class KelvoMainWindow;
class KelvoRegistry;

/// Lets the user load and unload the framework's plug-ins.
class KelvoPluginController : public QObject
{
    Q_OBJECT
public:
    explicit KelvoPluginController(KelvoMainWindow *mainWindow);
    ~KelvoPluginController() override;

public Q_SLOTS:
    /// Runs the dialog; then loads what the user added and after that unloads what the user took out. Whether that
    /// succeeds shows in the lists of renderers and sources and in the log.
    void showPluginsDialog();

private:
    KelvoRegistry *m_registry;
    KelvoMainWindow *m_mainWindow;
};
