// SPDX-License-Identifier: MIT
#include "LowComboBox.h"

#include <QStyleOptionComboBox>
#include <QStylePainter>

QRect LowComboBox::textArea() const
{
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field
        = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    // Fonts leave more room above their letters than below: in the middle is what is seen of them.
    const QFontMetrics metrics = fontMetrics();
    const QRect letters = metrics.tightBoundingRect(QStringLiteral("dg"));
    const int above = metrics.ascent() + letters.top();
    const int below = metrics.descent() - letters.bottom();
    return {field.left(), (below - above) / 2, field.width(), height()};
}

void LowComboBox::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect area = textArea();
    const QString text = fontMetrics().elidedText(option.currentText, Qt::ElideRight, area.width());
    painter.drawItemText(area, int(Qt::AlignVCenter | Qt::AlignLeading), option.palette, isEnabled(), text,
        QPalette::ButtonText);
}
