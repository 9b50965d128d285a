// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"

#include <QPointer>
#include <QTimer>

/// Asks a renderer what a window would ask that has just chosen it, for as long as it lives: whoever listens at the
/// boundary hears of its state, its volume and, again and again, its position. GUI thread.
class RendererInquiry : public QObject
{
    Q_OBJECT
public:
    /// @param renderer  may vanish meanwhile
    explicit RendererInquiry(KelvoRenderer *renderer);

private Q_SLOTS:
    // The answers: what matters is that they came.
    void takePosition(uint) { }
    void takeProperty(const QString &, const QVariant &) { }

private:
    void askPosition();

    QPointer<KelvoRenderer> m_renderer;
    QTimer m_clock;
};
