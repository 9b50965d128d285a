// SPDX-License-Identifier: MIT
#include "RendererInquiry.h"

namespace {
constexpr int inquiryInterval = 250; // milliseconds
} // namespace

RendererInquiry::RendererInquiry(KelvoRenderer *renderer)
    : m_renderer(renderer)
{
    // Whoever chooses a renderer is told all of it again.
    renderer->setKelvoProperty(KelvoRenderer::PropertyXid, 0U);
    renderer->kelvoProperty(KelvoRenderer::PropertyVolume, this, "takeProperty(QString,QVariant)");
    connect(&m_clock, &QTimer::timeout, this, &RendererInquiry::askPosition);
    m_clock.start(inquiryInterval);
}

void RendererInquiry::askPosition()
{
    if (m_renderer)
        m_renderer->getPosition(this, "takePosition(uint)");
}
