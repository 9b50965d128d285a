// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <QStringList>

class YamlNode;
struct Parameter;

/// Reads the steps of a scenario whose media, playlists and renderers are known. What is wrong is thrown as a
/// ScenarioFault.
class StepReader
{
public:
    /// The steps are added to that scenario.
    explicit StepReader(Scenario &scenario);

    void read(const YamlNode &steps);

private:
    void readStep(const YamlNode &node);
    void readNamed(const YamlNode &step, int renderer);
    void repeat(const YamlNode &node);
    void include(const YamlNode &node);
    void add(const YamlNode &node, int renderer, const QString &text, decltype(Step::what) what);
    int rendererOf(const YamlNode &node) const;
    CommandStep command(const Command &command, const YamlNode &node) const;
    QVariant argument(const Parameter &parameter, const YamlNode &node) const;
    QString playlistName(const YamlNode &node) const;
    FaultStep fault(const YamlNode &node) const;

    Scenario &m_scenario;
    QStringList m_files; ///< those that are being included, the outermost first
};
