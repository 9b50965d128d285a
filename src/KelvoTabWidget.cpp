// SPDX-License-Identifier: MIT
#include "KelvoTabWidget.h"

#include <QEvent>
#include <QStyleOptionTab>
#include <QTabBar>

#include <utility>

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
    void initStyleOption(QStyleOptionTab *option, int index) const override
    {
        QTabBar::initStyleOption(option, index);
        const int room = option->rect.width() - paddingOf(index);
        while (
            option->text.endsWith(QLatin1Char(' ')) && fontMetrics().horizontalAdvance(option->text) > room)
            option->text.chop(1);
    }

    QSize minimumTabSizeHint(int index) const override
    {
        const QSize whole = tabSizeHint(index);
        const QString blanks(trailingBlanks(tabText(index)), QLatin1Char(' '));
        return {whole.width() - fontMetrics().horizontalAdvance(blanks), whole.height()};
    }

private:
    int paddingOf(int index) const
    {
        return tabSizeHint(index).width() - fontMetrics().horizontalAdvance(tabText(index));
    }
};
} // namespace

KelvoTabWidget::KelvoTabWidget(QWidget *parent)
    : QTabWidget(parent)
{
    setTabBar(new YieldingTabBar(this));
}

// A label asks for a layout with each new text, which the label of the position has in every second, and the layout of a
// tab widget ends in painting everything in it.
bool KelvoTabWidget::event(QEvent *event)
{
    if (event->type() == QEvent::LayoutRequest && !isOtherSizeWanted())
        return QWidget::event(event);
    return QTabWidget::event(event);
}

bool KelvoTabWidget::isOtherSizeWanted()
{
    const QList<QSize> wanted
        = {sizeHint(), minimumSizeHint(), tabBar()->sizeHint(), tabBar()->minimumSizeHint()};
    return std::exchange(m_wantedSizes, wanted) != wanted;
}
