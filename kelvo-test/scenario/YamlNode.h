// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <QVariant>

#include <chrono>
#include <optional>
#include <vector>
#include <yaml-cpp/yaml.h>

/// What is wrong with a file: where, what, and what was meant. Thrown by readers.
struct ScenarioFault
{
    QString text;
};

/// A part of a YAML file, with its place in it. What is not as a reader wants it is a ScenarioFault.
class YamlNode // NOLINT(bugprone-exception-escape): assigning a node of the library may throw
{
public:
    /// Files beyond that are no scenarios. Bytes.
    static constexpr qint64 MaximumSize = 1024 * 1024;

    /// The one document of a file. References (*name) are refused: a few lines of them may mean billions.
    static YamlNode load(const QString &path);

    bool isMap() const { return m_node.IsMap(); }
    bool isList() const { return m_node.IsSequence(); }
    bool isNothing() const { return m_node.IsNull(); }
    Place place() const;

    /// What it is called in messages: "pauseAt".
    QString name() const { return m_name; }

    QString text() const;
    int integer(int least, int most) const;
    double number(double least, double most) const;
    bool boolean() const;
    std::chrono::milliseconds time() const;
    /// One of these words.
    QString word(const QStringList &words) const;
    /// true, 5, 1.5 and "text" as the types that they look like; texts in quotes stay texts.
    QVariant value() const;

    std::vector<YamlNode> items() const;
    /// In the order of the file, each named by its key.
    std::vector<YamlNode> entries() const;
    /// The same, where only these keys may be.
    std::vector<YamlNode> entries(const QStringList &known) const;
    std::optional<YamlNode> find(const QString &key) const;

    [[noreturn]] void fail(const QString &message) const;

private:
    YamlNode(const YAML::Node &node, YAML::Mark mark, QString name, QString file);

    YAML::Node m_node;
    YAML::Mark m_mark;
    QString m_name;
    QString m_file;
};
