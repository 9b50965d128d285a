// SPDX-License-Identifier: MIT
#include "UriListFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStringConverter>
#include <QTextStream>

namespace {
QString readText(QFile &file)
{
    const QByteArray bytes = file.readAll();
    return QStringDecoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8))(bytes);
}
} // namespace

std::optional<QStringList> UriListFile::read(const QString &path)
{
    // A pipe or a device may never come to an end.
    if (!QFileInfo(path).isFile())
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    // Read as a whole: from the file itself, the stream would look through a long line again with every block.
    QString text = readText(file);
    QTextStream stream(&text);
    QStringList lines;
    for (QString line = stream.readLine(); !line.isNull(); line = stream.readLine())
        lines.append(line);
    return lines;
}
