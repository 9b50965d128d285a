// SPDX-License-Identifier: MIT
#include "YamlText.h"

#include "HiddenCharacters.h"

QByteArray YamlText::quoted(const QString &text)
{
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('"'), QLatin1String("\\\""));
    return '"' + HiddenCharacters::shown(escaped).toUtf8() + '"';
}
