// SPDX-License-Identifier: MIT
#include "Captions.h"

#include "Contrast.h"

#include <QEvent>
#include <QToolButton>

namespace {
class Room : public QObject
{
public:
    Room(QToolButton *button, QStringList captions)
        : QObject(button)
        , m_button(button)
        , m_captions(std::move(captions))
    {
        m_button->installEventFilter(this);
        make();
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
            make();
        return QObject::eventFilter(watched, event);
    }

private:
    void make()
    {
        QToolButton sample;
        sample.setFont(m_button->font());
        sample.setStyle(m_button->style());
        sample.setIconSize(m_button->iconSize());
        sample.setToolButtonStyle(m_button->toolButtonStyle());
        int widest = 0;
        for (const QString &caption : std::as_const(m_captions)) {
            sample.setText(caption);
            widest = qMax(widest, sample.sizeHint().width());
        }
        m_button->setMinimumWidth(widest);
    }

    QToolButton *m_button;
    QStringList m_captions;
};
} // namespace

void Captions::makeRoom(QToolButton *button, const QStringList &captions)
{
    new Room(button, captions);
}

void Captions::paint(QToolButton *button, const QColor &color)
{
    QPalette palette; // what is not set in it stays the window's
    palette.setColor(QPalette::ButtonText, color);
    const QColor own = button->parentWidget()->palette().color(QPalette::Button);
    const QColor ground = Contrast::groundFor(color, own);
    if (ground != own) {
        palette.setColor(QPalette::Button, ground);
        // The theme's frame of the focus may not show there.
        palette.setColor(QPalette::Highlight, color);
    }
    button->setPalette(palette);
}
