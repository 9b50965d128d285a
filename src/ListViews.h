// SPDX-License-Identifier: MIT
#pragma once

class QAbstractItemModel;
class QListView;
class QString;
class QTextEdit;

/// What the tabs' lists and fields have in common.
namespace ListViews {

/// Column of playlists and results that holds the text to show.
constexpr int shownColumn = 1;

/// Shows that column of the model; null takes the model out. Unlike QListView::setModel() it deletes the
/// selection model that is no longer used, so that refreshing a view does not collect them.
void setModel(QListView *view, QAbstractItemModel *model);

/// Keeps one thing what the toolkit keeps apart: the current row, on which the operations work, is the one that is
/// highlighted, and none is current while nothing is highlighted. The toolkit makes the first row current when a list
/// without a current one gets the focus, and leaves a row current whose highlight was taken away.
void keepCurrentHighlighted(QListView *view);

/// Shows the whole text of a row that is cut, when the pointer rests on it.
void showElidedAsToolTip(QListView *view);

/// Neither a highlighted row nor a current one.
void clearHighlight(QListView *view);

/// Rows of the view's model, 0 without one.
int rowCount(const QListView *view);

/// Row of the current item, -1 when there is none.
int currentRow(const QListView *view);

/// The lowest and the highest selected row, whatever order they were selected in; both -1 when there is none.
struct Rows
{
    int first = -1;
    int last = -1;
};
Rows selectedRows(const QListView *view);

/// Appends a line as it is written: markup in the texts of media files is shown, not followed. What the field shows of
/// its text stays where it is, from the first line when nobody has scrolled it.
void appendLine(QTextEdit *field, const QString &line);
/// Appends "key: value".
void appendLine(QTextEdit *field, const QString &key, const QString &value);

} // namespace ListViews
