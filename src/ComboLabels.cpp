// SPDX-License-Identifier: MIT
#include "ComboLabels.h"

#include "Announcer.h"

#include <QComboBox>
#include <QLabel>

namespace {
void tellChoice(QLabel *label, const QComboBox *box)
{
    const QString chosen = box->currentText();
    const QString name = box->accessibleName();
    label->setText(chosen.isEmpty() ? name : QStringLiteral("%1: %2").arg(name, chosen));
    if (box->hasFocus())
        Announcer::say(box, chosen);
}
} // namespace

void ComboLabels::add(QWidget *window)
{
    const QList<QComboBox *> boxes = window->findChildren<QComboBox *>();
    for (QComboBox *box : boxes) {
        if (box->accessibleName().isEmpty())
            continue;
        // The toolkit looks for labels among the neighbours of a widget.
        auto *label = new QLabel(box->parentWidget());
        label->setTextFormat(Qt::PlainText);
        label->hide();
        label->setBuddy(box);
        tellChoice(label, box);
        QObject::connect(
            box, &QComboBox::currentTextChanged, label, [label, box] { tellChoice(label, box); });
    }
}
