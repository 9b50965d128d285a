// SPDX-License-Identifier: MIT
#pragma once

#include <QSlider>

/// Shows where an item is played, in seconds, and lets the user choose where it shall be.
///
/// Who follows sliderPressed() and sliderReleased() hears of a choice by keys, or by assistive technology, what there is
/// to hear of one by the mouse: keys press the slider as long as they are held, so that a key held down seeks once.
/// A plain slider to everybody else, so without a meta-object of its own.
class PositionSlider : public QSlider
{
public:
    explicit PositionSlider(QWidget *parent = nullptr);

    /// Follows what is played, unless the user holds the slider. Assistive technology reads the position when it is
    /// asked for it, but is not told of each second: it would speak over everything else.
    void follow(uint seconds);
    /// Presses the slider, moves it there and releases it.
    void choose(int seconds);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void releaseKey();

    bool m_heldByKey = false;
};
