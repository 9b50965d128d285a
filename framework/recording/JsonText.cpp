// SPDX-License-Identifier: MIT
#include "JsonText.h"

#include "KelvoContent.h"
#include "KelvoError.h"
#include "KelvoPlaylist.h"
#include "KelvoRenderer.h"

#include <QMetaEnum>
#include <QRect>
#include <QUrl>
#include <QVariant>

#include <array>
#include <charconv>
#include <cmath>

namespace {
constexpr std::string_view ellipsis = "\xe2\x80\xa6";
constexpr std::string_view replacement = "\xef\xbf\xbd";
constexpr int mostNested = 8;

void appendVariant(std::string &json, const QVariant &value, int depth);
void appendValueWithin(std::string &json, QMetaType type, const void *value, int depth);

void appendEscaped(std::string &json, char character)
{
    switch (character) {
    case '"':
        json += "\\\"";
        return;
    case '\\':
        json += "\\\\";
        return;
    case '\n':
        json += "\\n";
        return;
    case '\t':
        json += "\\t";
        return;
    default: {
        constexpr char digits[] = "0123456789abcdef";
        json += "\\u00";
        json += digits[(character >> 4) & 0xf];
        json += digits[character & 0xf];
    }
    }
}

void appendUtf8(std::string &json, char32_t character)
{
    const auto following = [&](int shift) {
        json += char(0x80 | ((character >> shift) & 0x3f));
    };
    if (character < 0x800) {
        json += char(0xc0 | (character >> 6));
    } else if (character < 0x10000) {
        json += char(0xe0 | (character >> 12));
        following(6);
    } else {
        json += char(0xf0 | (character >> 18));
        following(12);
        following(6);
    }
    following(0);
}

void appendCharacters(std::string &json, QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i].unicode();
        if (unit < 0x80) {
            if (unit < 0x20 || unit == '"' || unit == '\\' || unit == 0x7f)
                appendEscaped(json, char(unit));
            else
                json += char(unit);
        } else if (!QChar::isSurrogate(unit)) {
            appendUtf8(json, unit);
        } else if (QChar::isHighSurrogate(unit) && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            appendUtf8(json, QChar::surrogateToUcs4(unit, text[++i].unicode()));
        } else {
            json += replacement;
        }
    }
}

template <typename Number> void appendDigits(std::string &json, Number number)
{
    std::array<char, 32> digits;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    json.append(digits.data(), end);
}

template <typename Number> void appendFraction(std::string &json, Number number)
{
    if (std::isfinite(number))
        appendDigits(json, number);
    else
        json += "null";
}

/// Begins a list or an object, and ends it when it goes.
class Members
{
public:
    Members(std::string &json, char begin, char end)
        : m_json(json)
        , m_end(end)
    {
        m_json += begin;
    }
    ~Members() { m_json += m_end; }
    Q_DISABLE_COPY_MOVE(Members)

    void next()
    {
        if (std::exchange(m_first, false))
            return;
        m_json += ',';
    }
    /// Where an object goes on with its next member.
    void next(QStringView name)
    {
        next();
        JsonText::appendText(m_json, name);
        m_json += ':';
    }
    bool isFull() const { return m_json.size() >= JsonText::mostBytes; }

private:
    std::string &m_json;
    const char m_end;
    bool m_first = true;
};

template <typename List> void appendList(std::string &json, const List &list, int depth)
{
    if (depth > mostNested) {
        JsonText::appendName(json, ellipsis);
        return;
    }
    Members members(json, '[', ']');
    for (const auto &value : list) {
        members.next();
        if (members.isFull()) {
            JsonText::appendName(json, ellipsis);
            return;
        }
        appendValueWithin(
            json, QMetaType::fromType<std::decay_t<decltype(value)>>(), std::addressof(value), depth);
    }
}

template <typename Map> void appendMap(std::string &json, const Map &map, int depth)
{
    if (depth > mostNested) {
        JsonText::appendName(json, ellipsis);
        return;
    }
    Members members(json, '{', '}');
    for (auto member = map.begin(); member != map.end(); ++member) {
        if (members.isFull()) {
            members.next(u"…");
            json += "null";
            return;
        }
        members.next(member.key());
        appendVariant(json, member.value(), depth);
    }
}

/// A recording is made to be handed on.
QString textOf(const QUrl &url)
{
    return url.toString(QUrl::FullyEncoded | QUrl::RemovePassword);
}

void appendContent(std::string &json, const KelvoContent &content)
{
    Members members(json, '{', '}');
    members.next(u"uuid");
    JsonText::appendText(json, content.uuid);
    members.next(u"url");
    JsonText::appendText(json, textOf(content.url));
    members.next(u"mimeType");
    JsonText::appendText(json, content.mimeType);
}

void appendError(std::string &json, const KelvoError &error)
{
    Members members(json, '{', '}');
    members.next(u"code");
    appendDigits(json, int(error.code()));
    members.next(u"message");
    JsonText::appendText(json, error.message());
}

void appendRectangle(std::string &json, const QRect &rectangle)
{
    Members members(json, '[', ']');
    for (const int number : {rectangle.x(), rectangle.y(), rectangle.width(), rectangle.height()}) {
        members.next();
        appendDigits(json, number);
    }
}

void appendTypeOnly(std::string &json, QMetaType type)
{
    Members members(json, '{', '}');
    members.next(u"type");
    JsonText::appendText(json, QString::fromLatin1(type.name()));
}

void appendObject(std::string &json, QMetaType type, const QObject *object)
{
    if (!object)
        json += "null";
    else if (const auto *playlist = qobject_cast<const KelvoPlaylist *>(object))
        JsonText::appendText(json, playlist->uuid());
    else
        appendTypeOnly(json, type);
}

void appendEnumerator(std::string &json, QMetaType type, const void *value)
{
    qlonglong number = 0;
    QMetaType::convert(type, value, QMetaType::fromType<qlonglong>(), &number);
    const QMetaObject *scope = type.metaObject();
    const QByteArray name = QByteArray(type.name()).split(':').constLast();
    const int index = scope ? scope->indexOfEnumerator(name.constData()) : -1;
    const char *key = index < 0 ? nullptr : scope->enumerator(index).valueToKey(int(number));
    if (key)
        JsonText::appendName(json, key);
    else
        appendDigits(json, number);
}

/// Types of the boundary; false for any other.
bool appendOfBoundary(std::string &json, QMetaType type, const void *value)
{
    if (type == QMetaType::fromType<KelvoContent>())
        appendContent(json, *static_cast<const KelvoContent *>(value));
    else if (type == QMetaType::fromType<KelvoError>())
        appendError(json, *static_cast<const KelvoError *>(value));
    else if (type.flags() & QMetaType::PointerToQObject)
        appendObject(json, type, *static_cast<QObject *const *>(value));
    else if (type.flags() & QMetaType::IsEnumeration)
        appendEnumerator(json, type, value);
    else
        return false;
    return true;
}

/// Types that are plain numbers; false for any other.
bool appendIfNumber(std::string &json, QMetaType type, const void *value)
{
    switch (type.id()) {
    case QMetaType::Bool:
        json += *static_cast<const bool *>(value) ? "true" : "false";
        return true;
    case QMetaType::Int:
        appendDigits(json, *static_cast<const int *>(value));
        return true;
    case QMetaType::UInt:
        appendDigits(json, *static_cast<const uint *>(value));
        return true;
    case QMetaType::LongLong:
        appendDigits(json, *static_cast<const qlonglong *>(value));
        return true;
    case QMetaType::ULongLong:
        appendDigits(json, *static_cast<const qulonglong *>(value));
        return true;
    case QMetaType::Long:
        appendDigits(json, *static_cast<const long *>(value));
        return true;
    case QMetaType::ULong:
        appendDigits(json, *static_cast<const ulong *>(value));
        return true;
    case QMetaType::Short:
        appendDigits(json, int(*static_cast<const short *>(value)));
        return true;
    case QMetaType::UShort:
        appendDigits(json, int(*static_cast<const ushort *>(value)));
        return true;
    case QMetaType::Double:
        appendFraction(json, *static_cast<const double *>(value));
        return true;
    case QMetaType::Float:
        appendFraction(json, *static_cast<const float *>(value));
        return true;
    default:
        return false;
    }
}

/// What has a text form of its own, for instance a date.
void appendConverted(std::string &json, QMetaType type, const void *value)
{
    QString text;
    if (type.id() < QMetaType::User && type.id() != QMetaType::QByteArray
        && QMetaType::convert(type, value, QMetaType::fromType<QString>(), &text))
        JsonText::appendText(json, text);
    else
        appendTypeOnly(json, type);
}

void appendValueWithin(std::string &json, QMetaType type, const void *value, int depth)
{
    if (appendIfNumber(json, type, value))
        return;
    switch (type.id()) {
    case QMetaType::UnknownType:
    case QMetaType::Void:
    case QMetaType::Nullptr:
        json += "null";
        break;
    case QMetaType::QString:
        JsonText::appendText(json, *static_cast<const QString *>(value));
        break;
    case QMetaType::QUrl:
        JsonText::appendText(json, textOf(*static_cast<const QUrl *>(value)));
        break;
    case QMetaType::QRect:
        appendRectangle(json, *static_cast<const QRect *>(value));
        break;
    case QMetaType::QVariant:
        appendVariant(json, *static_cast<const QVariant *>(value), depth);
        break;
    case QMetaType::QVariantList:
        appendList(json, *static_cast<const QVariantList *>(value), depth + 1);
        break;
    case QMetaType::QStringList:
        appendList(json, *static_cast<const QStringList *>(value), depth + 1);
        break;
    case QMetaType::QVariantMap:
        appendMap(json, *static_cast<const QVariantMap *>(value), depth + 1);
        break;
    case QMetaType::QVariantHash:
        appendMap(json, *static_cast<const QVariantHash *>(value), depth + 1);
        break;
    default:
        if (!appendOfBoundary(json, type, value))
            appendConverted(json, type, value);
    }
}

void appendVariant(std::string &json, const QVariant &value, int depth)
{
    appendValueWithin(json, value.metaType(), value.constData(), depth);
}
} // namespace

void JsonText::appendText(std::string &json, QStringView text)
{
    json += '"';
    if (text.size() <= mostCharacters) {
        appendCharacters(json, text);
    } else {
        // Not in the middle of a pair.
        const bool splits = text[mostCharacters - 1].isHighSurrogate();
        appendCharacters(json, text.first(mostCharacters - (splits ? 1 : 0)));
        json += ellipsis;
    }
    json += '"';
}

void JsonText::appendName(std::string &json, std::string_view name)
{
    json += '"';
    json += name;
    json += '"';
}

void JsonText::appendNumber(std::string &json, qint64 number)
{
    appendDigits(json, number);
}

void JsonText::appendValue(std::string &json, QMetaType type, const void *value)
{
    appendValueWithin(json, type, value, 0);
}
