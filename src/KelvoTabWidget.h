// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QSize>
#include <QTabWidget>

/// A tab widget whose tab texts may end in blanks that only widen the tabs: in a window too narrow for all of
/// them the blanks give way first, so that no tab is cut off or pushed out of the window.
///
/// It is laid out, and so painted, only when something in it wants another size.
class KelvoTabWidget : public QTabWidget
{
    Q_OBJECT
public:
    explicit KelvoTabWidget(QWidget *parent = nullptr);

protected:
    bool event(QEvent *event) override;

private:
    bool isOtherSizeWanted();

    QList<QSize> m_wantedSizes; ///< when it was last laid out
};
