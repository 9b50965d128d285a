// SPDX-License-Identifier: MIT
#include "ResultReader.h"

#include "CsvResultReader.h"
#include "JsonResultReader.h"

#include <QList>

std::unique_ptr<ResultReader> ResultReader::forType(const QByteArray &mediaType, const RemoteLimits &limits)
{
    const QByteArray type = mediaType.split(';').constFirst().trimmed().toLower();
    if (type == "text/csv")
        return std::make_unique<CsvResultReader>(limits);
    if (type == "application/sparql-results+json")
        return std::make_unique<JsonResultReader>(limits);
    return nullptr;
}

QString ResultReader::tooManyColumns() const
{
    return QStringLiteral("it gives more than %1 columns").arg(m_limits.columns);
}

QString ResultReader::tooLongRow() const
{
    return QStringLiteral("it gives a row of more than %1 KiB").arg(m_limits.rowBytes / 1024);
}
