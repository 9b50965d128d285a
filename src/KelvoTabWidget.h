// SPDX-License-Identifier: MIT
#pragma once

#include <QTabWidget>

/// A tab widget whose tab texts may end in blanks that only widen the tabs: in a window too narrow for all of
/// them the blanks give way first, so that no tab is cut off or pushed out of the window.
class KelvoTabWidget : public QTabWidget
{
    Q_OBJECT
public:
    explicit KelvoTabWidget(QWidget *parent = nullptr);
};
