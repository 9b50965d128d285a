// SPDX-License-Identifier: MIT
#pragma once

class QListView;
class QWidget;

/// What lists understand from the keyboard beyond what the toolkit teaches them.
namespace ListKeys {

/// Return or Enter does to the current row what a double click does.
void doubleClickByReturn(QListView *view);

/// A row that the keyboard makes current is clicked by that.
void clickByMoving(QListView *view);

/// Alt with an arrow up or down, anywhere on the page, makes the row before or after current in a list that takes no
/// focus itself, and clicks it.
void moveFromPage(QWidget *page, QListView *view);

} // namespace ListKeys
