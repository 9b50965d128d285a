// SPDX-License-Identifier: MIT
#include "PackedItems.h"

#include <QStringEncoder>

#include <algorithm>

namespace {
constexpr char separator = '\0';
constexpr int fieldsOfItem = 5;

void appendField(QByteArray &bytes, QStringView text)
{
    const qsizetype start = bytes.size();
    QStringEncoder encode(QStringEncoder::Utf8);
    bytes.resize(start + encode.requiredSpace(text.size()));
    const char *end = encode.appendToBuffer(bytes.data() + start, text);
    bytes.truncate(end - bytes.constData());
    if (text.contains(QChar::Null))
        bytes.erase(std::remove(bytes.begin() + start, bytes.end(), separator), bytes.end());
    bytes.append(separator);
}

/// Takes the next field off the bytes; they hold one.
QByteArrayView takeField(QByteArrayView &bytes)
{
    const qsizetype end = bytes.indexOf(separator);
    const QByteArrayView field = bytes.first(end);
    bytes = bytes.sliced(end + 1);
    return field;
}
} // namespace

QByteArray PackedItems::pack(const SharedItems &items)
{
    QByteArray bytes;
    for (const SharedItem &item : items) {
        bytes.reserve(std::max(bytes.capacity(), bytes.size() + 3 * item.characters() + 32));
        appendField(bytes, item.id);
        appendField(bytes, item.title);
        appendField(bytes, item.url);
        appendField(bytes, item.mimeType);
        bytes += QByteArray::number(item.duration);
        bytes += separator;
    }
    return bytes;
}

std::optional<SharedItems> PackedItems::unpack(const QByteArray &bytes, uint limit)
{
    const qsizetype fields = bytes.count(separator);
    const bool whole = bytes.isEmpty() || bytes.back() == separator;
    if (!whole || fields % fieldsOfItem != 0 || fields / fieldsOfItem > qsizetype(limit))
        return {};
    SharedItems items;
    items.reserve(fields / fieldsOfItem);
    QByteArrayView rest = bytes;
    QByteArrayView lastType;
    while (!rest.isEmpty()) {
        SharedItem item;
        item.id = QString::fromUtf8(takeField(rest));
        item.title = QString::fromUtf8(takeField(rest));
        item.url = QString::fromUtf8(takeField(rest));
        const QByteArrayView type = takeField(rest);
        // Most items are of the type of the one before: they share its text.
        item.mimeType
            = !items.isEmpty() && type == lastType ? items.constLast().mimeType : QString::fromUtf8(type);
        lastType = type;
        bool valid = false;
        item.duration = takeField(rest).toLongLong(&valid);
        if (!valid)
            return {};
        items.append(std::move(item));
    }
    return items;
}
