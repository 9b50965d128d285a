// SPDX-License-Identifier: MIT
#include "KelvoRenderer.h"

KelvoRenderer::KelvoRenderer(QObject *parent)
    : QObject(parent)
{
}

KelvoRenderer::~KelvoRenderer() = default;
