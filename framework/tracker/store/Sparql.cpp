// SPDX-License-Identifier: MIT
#include "Sparql.h"

#include "GObjectPtr.h"

#include <QDateTime>

#include <libtracker-sparql/tracker-sparql.h>

QByteArray Sparql::literal(const QByteArray &utf8)
{
    QByteArray text = utf8;
    text.replace('\0', QByteArray());
    const GCharPtr escaped(tracker_sparql_escape_string(text.constData()));
    return '"' + QByteArray(escaped.get()) + '"';
}

QByteArray Sparql::literal(const QString &text)
{
    return literal(text.toUtf8());
}

QByteArray Sparql::iri(const QByteArray &text)
{
    static const QByteArray forbidden(" <>\"{}|^`\\");
    QByteArray result("<");
    for (const char c : text) {
        if (uchar(c) <= 0x20 || forbidden.contains(c))
            result += '%' + QByteArray::number(uchar(c), 16).rightJustified(2, '0').toUpper();
        else
            result += c;
    }
    return result + '>';
}

QByteArray Sparql::now()
{
    return '"' + QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1() + '"';
}
