// SPDX-License-Identifier: MIT
#include "ScreenLock.h"

#include "ScreenSaver.h"
#include "VideoWatch.h"

struct ScreenLock::Private
{
    explicit Private(const KelvoRegistry *registry)
        : watch(registry)
    {
        QObject::connect(&watch, &VideoWatch::shownChanged, &screenSaver, &ScreenSaver::setInhibited);
        screenSaver.setInhibited(watch.isShown());
    }

    ScreenSaver screenSaver;
    VideoWatch watch;
};

ScreenLock::ScreenLock(const KelvoRegistry *registry)
    : d(std::make_unique<Private>(registry))
{
}

ScreenLock::~ScreenLock() = default;
