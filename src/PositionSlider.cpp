// SPDX-License-Identifier: MIT
#include "PositionSlider.h"

#include <QAccessibleWidget>
#include <QKeyEvent>

#include <utility>

namespace {
/// Drops what would go to assistive technology.
class Silence
{
public:
    Silence()
        : m_handler(QAccessible::installUpdateHandler([](QAccessibleEvent *) {}))
    {
    }
    ~Silence() { QAccessible::installUpdateHandler(m_handler); }
    Q_DISABLE_COPY_MOVE(Silence)

private:
    QAccessible::UpdateHandler m_handler;
};

/// What assistive technology sees of the slider. The toolkit's own moves it without pressing it, which chooses nothing.
class SliderInterface : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit SliderInterface(PositionSlider *slider)
        : QAccessibleWidget(slider, QAccessible::Slider)
    {
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override { return slider()->value(); }
    void setCurrentValue(const QVariant &value) override { slider()->choose(value.toInt()); }
    QVariant maximumValue() const override { return slider()->maximum(); }
    QVariant minimumValue() const override { return slider()->minimum(); }
    QVariant minimumStepSize() const override { return slider()->singleStep(); }

private:
    PositionSlider *slider() const { return static_cast<PositionSlider *>(widget()); }
};

QAccessibleInterface *makeInterface(const QString &className, QObject *object)
{
    auto *slider = className == QLatin1String("QSlider") ? dynamic_cast<PositionSlider *>(object) : nullptr;
    return slider ? new SliderInterface(slider) : nullptr;
}

/// Those by which the toolkit moves a slider.
bool isMove(const QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        return false;
    }
}
} // namespace

PositionSlider::PositionSlider(QWidget *parent)
    : QSlider(parent)
{
    // Before anything can ask for the interface, which is made once.
    static const bool installed = (QAccessible::installFactory(makeInterface), true);
    Q_UNUSED(installed)
}

void PositionSlider::follow(uint seconds)
{
    if (isSliderDown())
        return;
    const Silence silence;
    setValue(int(qMin(seconds, uint(maximum()))));
}

void PositionSlider::choose(int seconds)
{
    const bool held = isSliderDown();
    setSliderDown(true);
    setValue(seconds);
    setSliderDown(held);
}

void PositionSlider::keyPressEvent(QKeyEvent *event)
{
    if (isMove(event) && !isSliderDown()) {
        m_heldByKey = true;
        setSliderDown(true);
    }
    QSlider::keyPressEvent(event);
}

void PositionSlider::keyReleaseEvent(QKeyEvent *event)
{
    if (isMove(event) && !event->isAutoRepeat())
        releaseKey();
    QSlider::keyReleaseEvent(event);
}

void PositionSlider::focusOutEvent(QFocusEvent *event)
{
    releaseKey(); // nobody would tell of it any more
    QSlider::focusOutEvent(event);
}

void PositionSlider::releaseKey()
{
    if (std::exchange(m_heldByKey, false))
        setSliderDown(false);
}
