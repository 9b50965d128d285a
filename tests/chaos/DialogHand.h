// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <functional>

class QDialog;

/// Sees to the modal dialogs: to the one that a step opens as the step says, to others by closing them.
class DialogHand : public QObject
{
public:
    using Plan = std::function<void(QDialog *dialog)>;

    /// Of the whole program.
    DialogHand();

    /// What is done with the next one. It is closed afterwards, if it is still open.
    void planNext(Plan plan) { m_plan = std::move(plan); }
    void forgetPlan() { m_plan = {}; }
    int seen() const { return m_seen; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void attendTo(QDialog *dialog);

    Plan m_plan;
    int m_seen = 0;
};
