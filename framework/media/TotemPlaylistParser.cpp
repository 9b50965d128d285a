// SPDX-License-Identifier: MIT
#include "ForeignLibrary.h"
#include "GlibHandles.h"
#include "PlaylistEntries.h"
#include "PlaylistParser.h"

#include <QFile>
#include <QXmlStreamReader>

#include <sys/mman.h>

#include <totem-pl-parser.h>

namespace {
using PlaylistFile::Contents;
using PlaylistFile::Format;

/// The functions of totem-pl-parser. It is loaded for the first list, not with whoever may play one: it brings a reader of
/// archives and more.
struct TotemLibrary
{
    TotemLibrary()
    {
        file.find(newParser, "totem_pl_parser_new");
        file.find(parse, "totem_pl_parser_parse_with_base");
    }

    static const TotemLibrary &instance()
    {
        static const TotemLibrary functions;
        return functions;
    }

    ForeignLibrary file{"libtotem-plparser.so.18"};
    decltype(&::totem_pl_parser_new) newParser = nullptr;
    decltype(&::totem_pl_parser_parse_with_base) parse = nullptr;
};

struct Collection
{
    QUrl base;
    QByteArray title;
    QList<QUrl> entries;
    QList<QByteArray> titles;
    int seen = 0;
    int refused = 0;
};

QByteArray titleOf(GHashTable *metadata)
{
    // Null means an empty text to QByteArray.
    const void *title = metadata ? g_hash_table_lookup(metadata, TOTEM_PL_PARSER_FIELD_TITLE) : nullptr;
    return static_cast<const char *>(title);
}

// The parser knows a list without this by its name only, and its copy has none.
constexpr QByteArrayView beginningOfLines("#EXTM3U");

/// The list as the parser can take it: entries it would take as seen from its own copy.
QByteArray prepared(const QByteArray &text, Format format, const QUrl &base)
{
    using PlaylistEntries::Syntax;
    if (format == Format::Xspf)
        return text;
    if (format == Format::Pls)
        return PlaylistEntries::withAbsoluteEntries(text, Syntax::Keys, base);
    const QByteArray lines = PlaylistEntries::withAbsoluteEntries(text, Syntax::Lines, base);
    return lines.startsWith(beginningOfLines) ? lines : beginningOfLines.toByteArray() + "\n" + lines;
}

void addEntry(TotemPlParser *, const char *entry, GHashTable *metadata, gpointer data)
{
    auto *collection = static_cast<Collection *>(data);
    ++collection->seen;
    const QUrl uri = PlaylistEntries::resolved(entry, collection->base);
    if (!uri.isValid() || uri == collection->base
        || collection->entries.count() >= PlaylistFile::maximumEntries)
        return;
    if (!PlaylistEntries::mayName(collection->base, uri)) {
        ++collection->refused;
        return;
    }
    collection->entries.append(uri);
    collection->titles.append(titleOf(metadata));
}

void takeTitle(TotemPlParser *, const char *, GHashTable *metadata, gpointer data)
{
    static_cast<Collection *>(data)->title = titleOf(metadata);
}

/// A copy of the list for the parser, which reads files only. It is in memory: nothing stays of it however the program
/// ends.
class Copy
{
public:
    explicit Copy(const QByteArray &text)
        : m_descriptor(::memfd_create("kelvo-playlist", MFD_CLOEXEC))
    {
        m_written = m_file.open(m_descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
            && m_file.write(text) == text.size() && m_file.flush();
    }
    bool isWritten() const { return m_written; }
    QString errorString() const { return m_file.errorString(); }
    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    const int m_descriptor;
    QFile m_file;
    bool m_written = false;
};

/// The parser takes broken XML for an empty list.
bool isWellFormed(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

TotemPlParserResult run(const TotemLibrary &totem, const QString &path, Collection &collection)
{
    const GlibHandles::Object<TotemPlParser> parser(totem.newParser());
    g_object_set(parser.get(), "recurse", FALSE, "disable-unsafe", TRUE, nullptr);
    g_signal_connect(parser.get(), "entry-parsed", G_CALLBACK(addEntry), &collection);
    g_signal_connect(parser.get(), "playlist-started", G_CALLBACK(takeTitle), &collection);
    const QByteArray file = QUrl::fromLocalFile(path).toEncoded();
    const QByteArray base = collection.base.adjusted(QUrl::RemoveFilename).toEncoded();
    return totem.parse(parser.get(), file.constData(), base.constData(), FALSE);
}
} // namespace

PlaylistFile::Contents PlaylistParser::parse(const QByteArray &file, Format format, const QUrl &uri)
{
    // The parser does not know the mark.
    const bool marked = file.startsWith(PlaylistFile::byteOrderMark);
    const QByteArray text = marked ? file.mid(PlaylistFile::byteOrderMark.size()) : file;
    const QString name = uri.toDisplayString();
    if (text.trimmed().isEmpty())
        return Contents::unusable(KelvoError::EmptyPlaylist, name);
    const TotemLibrary &totem = TotemLibrary::instance();
    if (!totem.file.isWhole())
        return Contents::unusable(KelvoError::UnsupportedType,
            QStringLiteral("%1 is a playlist file, which cannot be read: %2")
                .arg(name, totem.file.errorText()));
    const Copy copy(prepared(text, format, uri));
    if (!copy.isWritten())
        return Contents::unusable(KelvoError::EngineFailed, copy.errorString());
    Collection collection{uri, {}, {}, {}};
    const TotemPlParserResult result = run(totem, copy.path(), collection);
    if (!collection.entries.isEmpty())
        return {
            Contents::List, collection.entries, KelvoError::NoError, {}, collection.title, collection.titles};
    if (collection.refused > 0)
        return Contents::unusable(KelvoError::InvalidPlaylist,
            name + QLatin1String(" comes from the network and names only what is on this computer"));
    if (collection.seen > 0)
        return Contents::unusable(
            KelvoError::InvalidPlaylist, name + QLatin1String(" names nothing but itself"));
    const bool understood
        = result == TOTEM_PL_PARSER_RESULT_SUCCESS && (format != Format::Xspf || isWellFormed(text));
    Contents contents
        = Contents::unusable(understood ? KelvoError::EmptyPlaylist : KelvoError::InvalidPlaylist, name);
    contents.title = collection.title;
    return contents;
}
