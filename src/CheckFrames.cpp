// SPDX-License-Identifier: MIT
#include "CheckFrames.h"

#include "Contrast.h"

#include <QCheckBox>
#include <QEvent>
#include <QPainter>
#include <QStyleOptionButton>

namespace {
constexpr int shade = 140; // percent, of the toolkit's own style
constexpr double visible = 1.5;

bool isFrameVisible(const QPalette &palette)
{
    const QColor window = palette.color(QPalette::Window);
    return Contrast::ratio(window.darker(shade), window) >= visible
        || Contrast::ratio(palette.color(QPalette::Base), window) >= visible;
}

/// Paints the frame over what the style has painted.
class Frame : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *box = qobject_cast<QCheckBox *>(watched);
        if (event->type() != QEvent::Paint || !box || isFrameVisible(box->palette()))
            return QObject::eventFilter(watched, event);
        watched->event(event);
        QStyleOptionButton option;
        option.initFrom(box);
        const QRect place = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box);
        QPainter painter(box);
        painter.setPen(box->palette().color(QPalette::WindowText));
        painter.drawRect(place.adjusted(0, 0, -1, -1));
        return true;
    }
};
} // namespace

void CheckFrames::makeVisible(QCheckBox *box)
{
    box->installEventFilter(new Frame(box));
}
