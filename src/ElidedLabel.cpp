// SPDX-License-Identifier: MIT
#include "ElidedLabel.h"

#include "Announcer.h"

#include <QPainter>
#include <QStyle>
#include <QTextDocument>

ElidedLabel::ElidedLabel(QWidget *parent)
    : QLabel(parent)
{
}

void ElidedLabel::showMessage(const QString &message)
{
    setText(message);
    setAccessibleDescription(message);
    Announcer::say(this, message);
    // As rich text it is wrapped where a plain one would leave the screen.
    setToolTip(message.isEmpty() ? QString() : Qt::convertFromPlainText(message, Qt::WhiteSpaceNormal));
}

QSize ElidedLabel::sizeHint() const
{
    return {QLabel::sizeHint().width(), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    drawFrame(&painter);
    const QRect area = contentsRect();
    // Line breaks become blanks.
    const QString line = fontMetrics().elidedText(text().simplified(), Qt::ElideMiddle, area.width());
    style()->drawItemText(&painter, area, int(alignment()), palette(), isEnabled(), line, foregroundRole());
}
