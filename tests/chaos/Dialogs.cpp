// SPDX-License-Identifier: MIT
#include "Dialogs.h"

#include "Addresses.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

namespace {
constexpr const char *dialogActions[] = {
    "m_actionHelp",
    "m_actionVolume",
    "m_actionVolume",
    "m_actionVolume",
    "m_actionCreateNew",
    "m_actionCreateNew",
    "m_actionCreateNew",
    "m_actionSearch",
    "m_actionSelectSources",
    "m_actionSelectSources",
    "m_actionSourceProperties",
    "m_actionSourceProperties",
    "m_actionPlugins",
    "m_actionQuery_properties",
};

bool closesIt(const QAbstractButton *button)
{
    static const QStringList closing{
        "m_okButton", "m_cancelButton", "m_doneButton", "m_closeButton", "m_executeButton", "m_playButton"};
    return closing.contains(button->objectName()) || button->parent()->inherits("QDialogButtonBox");
}

QString someText(Dice &dice)
{
    switch (dice.below(5)) {
    case 0:
        return {};
    case 1:
        return QString(dice.between(1, 300), u'w');
    case 2:
        return QStringLiteral("<b>bold</b>\u202eright to left\u0007");
    default:
        return QStringLiteral("name %1").arg(dice.below(100));
    }
}
} // namespace

Dialogs::Dialogs(const Stage &stage)
    : m_stage(stage)
{
}

QList<Deed> Dialogs::deeds()
{
    return {
        {9, Deed::AtTheWindow, std::bind_front(&Dialogs::open, this)},
        {10, Deed::AtTheWindow, std::bind_front(&Dialogs::playUri, this)},
    };
}

void Dialogs::open(Dice &dice) const
{
    const char *action = dice.oneOf(dialogActions);
    m_stage.say(QStringLiteral("dialog of %1").arg(QLatin1String(action)));
    const int seen = m_stage.hand.seen();
    m_stage.hand.planNext([this, &dice](QDialog *dialog) { attendTo(dialog, dice); });
    m_stage.find<QAction>(action)->trigger();
    m_stage.hand.forgetPlan();
    if (m_stage.hand.seen() == seen)
        m_stage.journal.fail(QStringLiteral("the dialog of %1 does not open").arg(QLatin1String(action)));
}

void Dialogs::attendTo(QDialog *opened, Dice &dice) const
{
    const QPointer<QDialog> dialog = opened;
    const int deeds = dice.below(6);
    for (int i = 0; i < deeds && dialog && dialog->isVisible(); ++i) {
        if (dice.chance(50))
            m_stage.meanwhile(dice);
        else
            workWith(dialog, dice);
        QCoreApplication::processEvents();
        m_stage.meter.forget(); // several events are no single one
    }
    if (dialog && dialog->isVisible())
        close(dialog, dice);
}

void Dialogs::workWith(QDialog *dialog, Dice &dice) const
{
    const QWidgetList widgets = dialog->findChildren<QWidget *>();
    QWidget *widget = widgets.at(dice.below(int(widgets.size())));
    const int number = dice.below(1000);
    m_stage.say(QStringLiteral("work with %1").arg(widget->objectName()));
    if (auto *slider = qobject_cast<QSlider *>(widget))
        slider->setValue(slider->minimum() + number % (slider->maximum() - slider->minimum() + 1));
    else if (auto *edit = qobject_cast<QLineEdit *>(widget))
        edit->setText(someText(dice));
    else if (auto *spin = qobject_cast<QSpinBox *>(widget))
        spin->setValue(number);
    else if (auto *combo = qobject_cast<QComboBox *>(widget); combo && combo->count() > 0)
        combo->setCurrentIndex(number % combo->count());
    else if (auto *list = qobject_cast<QListWidget *>(widget); list && list->count() > 0)
        list->setCurrentRow(number % list->count());
    else if (auto *button = qobject_cast<QAbstractButton *>(widget); button && !closesIt(button))
        button->click();
}

void Dialogs::close(QDialog *dialog, Dice &dice) const
{
    const int how = dice.below(4);
    m_stage.say(QStringLiteral("close the dialog in way %1").arg(how));
    if (how == 0)
        dialog->reject();
    else if (how == 1)
        dialog->close();
    else if (how == 2)
        QTest::keyClick(dialog, Qt::Key_Escape);
    else
        dialog->accept();
}

void Dialogs::playUri(Dice &dice) const
{
    const bool isList = dice.chance(20);
    const QString address = isList ? Addresses::list(dice) : Addresses::any(dice);
    m_stage.say(QStringLiteral("play %1").arg(address));
    m_stage.find<QAction>("m_actionPlayUri")->trigger();
    auto *dialog = m_stage.find<QDialog>("PlayUriDialog");
    dialog->findChild<QComboBox *>("m_selectUriComboBox")->setCurrentText(address);
    dialog->findChild<QAbstractButton *>("m_enterUriButton")->click();
    dialog->findChild<QCheckBox *>("m_isPlaylistCheckBox")->setChecked(isList);
    auto *list = dialog->findChild<QListWidget *>("m_playlistView");
    if (list->count() > 0)
        Q_EMIT list->itemClicked(list->item(list->count() - 1));
    dialog->findChild<QAbstractButton *>(dice.chance(90) ? "m_playButton" : "m_cancelButton")->click();
    if (dialog->isVisible())
        dialog->reject();
}
