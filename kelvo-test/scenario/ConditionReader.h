// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

class YamlNode;

/// Reads what a scenario expects. What is wrong is thrown as a ScenarioFault.
class ConditionReader
{
public:
    /// @param media  that conditions may name
    /// @param renderer  that they are about
    ConditionReader(const QList<Medium> &media, int renderer);

    ExpectStep expectation(const YamlNode &node) const;
    NeverStep never(const YamlNode &node) const;

private:
    /// @param more  further keys that the map may have
    Condition condition(const YamlNode &node, const QStringList &more) const;
    Condition report(const YamlNode &node, const QStringList &more) const;
    void take(Condition &condition, const YamlNode &entry) const;
    ExpectStep count(const YamlNode &node) const;

    const QList<Medium> &m_media;
    const int m_renderer;
};
