// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// A label of one line that shows beginning and end of a text that it has no room for: of a path both matter.
/// text() stays the whole. A plain label to everybody else, so without a meta-object of its own.
class ElidedLabel : public QLabel
{
public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    /// The text, and the same as tool tip and for assistive technology, which is told of it.
    void showMessage(const QString &message);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
