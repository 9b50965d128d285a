// SPDX-License-Identifier: MIT
#pragma once

#include "Commands.h"
#include "Scenario.h"

#include <QHash>
#include <QRandomGenerator>

#include <map>
#include <memory>

class KelvoRenderer;
class MediaShelf;

/// The playlists of one run, and what its commands are carried out with.
class ScenarioStage : public Stage
{
public:
    /// Registry and shelf are not owned and outlive this.
    /// @param seed  of the random numbers that a scenario may ask for
    ScenarioStage(const Scenario &scenario, KelvoRegistry *registry, const MediaShelf *shelf, quint32 seed);
    ~ScenarioStage() override;

    /// @param renderer  may be null for commands that need none
    /// @return the arguments as they were used: random ones have become numbers
    QVariantList run(const CommandStep &step, KelvoRenderer *renderer);

    /// Name of the command that was given last.
    QString lastCommand() const { return m_lastCommand; }

    KelvoRegistry &registry() override { return *m_registry; }
    KelvoRenderer &renderer() override { return *m_renderer; }
    KelvoGeneralSourcePlaylist &playlist(const QString &name) override { return *m_playlists.at(name); }
    QUrl url(const QString &medium) override;

private:
    QVariantMap drawn(const QVariantMap &arguments);

    KelvoRegistry *const m_registry;
    const MediaShelf *const m_shelf;
    KelvoRenderer *m_renderer = nullptr;
    std::map<QString, std::unique_ptr<KelvoGeneralSourcePlaylist>> m_playlists;
    QRandomGenerator m_random;
    QString m_lastCommand;
};
