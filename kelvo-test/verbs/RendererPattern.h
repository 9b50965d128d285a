// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

class KelvoRenderer;

/// What a tester writes for a renderer: its uuid, its name (in capitals or not), a glob for either, or "all".
class RendererPattern
{
public:
    explicit RendererPattern(QString text);

    QString text() const { return m_text; }
    /// Whether it may stand for more than one.
    bool isOpen() const;
    /// Those that it stands for, in their order. Where one has it as its uuid or name, that one alone.
    QList<KelvoRenderer *> matchesAmong(const QList<KelvoRenderer *> &renderers) const;

private:
    const QString m_text;
};
