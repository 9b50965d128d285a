// SPDX-License-Identifier: MIT
#include "HtmlText.h"

#include "HiddenCharacters.h"

#include <QJsonArray>
#include <QJsonDocument>

QByteArray HtmlText::of(const QString &text)
{
    return HiddenCharacters::shown(text)
        .toHtmlEscaped()
        .replace(QLatin1Char('\''), QLatin1String("&#39;"))
        .toUtf8();
}

QByteArray HtmlText::ofJson(const QJsonValue &value)
{
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return of(QString::fromUtf8(json.sliced(1, json.size() - 2)));
}
