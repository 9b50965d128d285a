// SPDX-License-Identifier: MIT
#pragma once

#include <QListWidget>
#include <QStringList>

inline QStringList texts(const QListWidget *list)
{
    QStringList texts;
    for (int row = 0; row < list->count(); ++row)
        texts.append(list->item(row)->text());
    return texts;
}
