// SPDX-License-Identifier: MIT
#pragma once

#include <QComboBox>

/// A combo box that is lower than a line of its font and a frame: what it shows may take all of its height, where a plain
/// one would cut it. A plain one to everybody else, so without a meta-object of its own.
class LowComboBox : public QComboBox
{
public:
    using QComboBox::QComboBox;

    /// Where its line of text is in the middle.
    QRect textArea() const;

protected:
    void paintEvent(QPaintEvent *event) override;
};
