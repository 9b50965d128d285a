// SPDX-License-Identifier: MIT
#include "KelvoSource.h"

KelvoSource::KelvoSource(QObject *parent)
    : QObject(parent)
{
}

KelvoSource::~KelvoSource() = default;
