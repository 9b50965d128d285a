// SPDX-License-Identifier: MIT
#include "KelvoTabWidget.h"

#include <QTabBar>

namespace {
int trailingBlanks(const QString &text)
{
    int count = 0;
    while (count < text.size() && text.at(text.size() - 1 - count) == QLatin1Char(' '))
        ++count;
    return count;
}

class YieldingTabBar : public QTabBar
{
public:
    using QTabBar::QTabBar;

protected:
    QSize minimumTabSizeHint(int index) const override
    {
        const QSize whole = tabSizeHint(index);
        const QString blanks(trailingBlanks(tabText(index)), QLatin1Char(' '));
        return {whole.width() - fontMetrics().horizontalAdvance(blanks), whole.height()};
    }
};
} // namespace

KelvoTabWidget::KelvoTabWidget(QWidget *parent)
    : QTabWidget(parent)
{
    setTabBar(new YieldingTabBar(this));
}
