// SPDX-License-Identifier: MIT
#include "KelvoCommandListener.h"

std::atomic<KelvoCommandListener *> KelvoCommandListener::s_installed = nullptr;

KelvoCommandListener::~KelvoCommandListener()
{
    KelvoCommandListener *self = this;
    s_installed.compare_exchange_strong(self, nullptr);
}

void KelvoCommandListener::install(KelvoCommandListener *listener)
{
    s_installed.store(listener, std::memory_order_release);
}
