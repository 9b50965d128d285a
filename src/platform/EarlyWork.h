// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <thread>

/// What the program needs in a moment and takes long to get, done by threads while it makes its window: the list of fonts,
/// and the engines of the back ends that it starts with.
class EarlyWork
{
public:
    EarlyWork() = default;
    /// Waits for the fonts.
    ~EarlyWork();
    Q_DISABLE_COPY_MOVE(EarlyWork)

    /// Begins before the application object is made, unless making it changes the environment, which those threads read.
    void beginIfSettled();
    /// Begins, if it has not yet. To be called once the environment stays as it is.
    void begin();
    /// To be called before the first text is laid out, which would read the same once more.
    void waitForFonts();

private:
    bool m_hasBegun = false;
    std::thread m_fonts;
};
