// SPDX-License-Identifier: MIT
#include "FormTable.h"

#include <QDialog>
#include <QGridLayout>
#include <QTest>

void compareForm(const QDialog &dialog, std::span<const FormCell> cells)
{
    const auto *grid = dialog.findChild<QGridLayout *>("gridLayout");
    QVERIFY(grid);
    QCOMPARE(grid, dialog.layout());
    for (const FormCell &cell : cells) {
        auto *widget = dialog.findChild<QWidget *>(QLatin1String(cell.name));
        QVERIFY2(widget, cell.name);
        QCOMPARE(widget->metaObject()->className(), cell.kind);
        int row = -1, column = -1, rowSpan = -1, columnSpan = -1;
        grid->getItemPosition(grid->indexOf(widget), &row, &column, &rowSpan, &columnSpan);
        QCOMPARE(QList<int>({row, column, rowSpan, columnSpan}),
            QList<int>({cell.row, cell.column, cell.rowSpan, cell.columnSpan}));
        if (cell.points)
            QCOMPARE(widget->font().pointSize(), cell.points);
        if (cell.text)
            QCOMPARE(widget->property("text").toString(), QString::fromLatin1(cell.text));
        else
            QVERIFY2(!widget->accessibleName().isEmpty(), cell.name);
    }
}
