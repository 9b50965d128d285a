// SPDX-License-Identifier: MIT
#include "YamlNode.h"

#include "Quantities.h"
#include "Spelling.h"

#include <QFile>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <yaml-cpp/eventhandler.h>

namespace {
QString placeText(const QString &file, const YAML::Mark &mark)
{
    return QStringLiteral("%1:%2:%3: ").arg(file).arg(mark.line + 1).arg(mark.column + 1);
}

/// Looks at a file before it is taken: what cannot be a scenario is not even built in memory.
class Inspector : public YAML::EventHandler
{
public:
    explicit Inspector(QString file)
        : m_file(std::move(file))
    {
    }
    void OnDocumentStart(const YAML::Mark &) override { }
    void OnDocumentEnd() override { }
    void OnNull(const YAML::Mark &, YAML::anchor_t) override { }
    void OnScalar(const YAML::Mark &, const std::string &, YAML::anchor_t, const std::string &) override { }
    void OnAlias(const YAML::Mark &mark, YAML::anchor_t) override
    {
        throw ScenarioFault{placeText(m_file, mark)
            + QStringLiteral(
                "references (*name) are not understood; write it out, or use \"repeat\" or \"include\"")};
    }
    void OnSequenceStart(
        const YAML::Mark &mark, const std::string &, YAML::anchor_t, YAML::EmitterStyle::value) override
    {
        enter(mark);
    }
    void OnSequenceEnd() override { --m_depth; }
    void OnMapStart(
        const YAML::Mark &mark, const std::string &, YAML::anchor_t, YAML::EmitterStyle::value) override
    {
        enter(mark);
    }
    void OnMapEnd() override { --m_depth; }

private:
    void enter(const YAML::Mark &mark)
    {
        constexpr int deepest = 50;
        if (++m_depth > deepest)
            throw ScenarioFault{
                placeText(m_file, mark) + QStringLiteral("too deep: no scenario is nested so far")};
    }

    const QString m_file;
    int m_depth = 0;
};

QString kindOf(const YAML::Node &node)
{
    if (node.IsMap())
        return QStringLiteral("a map");
    if (node.IsSequence())
        return QStringLiteral("a list");
    if (node.IsScalar())
        return QStringLiteral("\"%1\"").arg(QString::fromStdString(node.Scalar()).left(60));
    return QStringLiteral("nothing");
}

std::string contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ScenarioFault{QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString())};
    const QByteArray content = file.read(YamlNode::MaximumSize + 1);
    if (content.size() > YamlNode::MaximumSize)
        throw ScenarioFault{QStringLiteral("%1: is larger than 1 MiB, which no scenario is").arg(path)};
    return content.toStdString();
}

/// The parser names no place where it misses something at the end.
YAML::Mark endOf(const std::string &content)
{
    YAML::Mark mark;
    mark.line = int(std::count(content.cbegin(), content.cend(), '\n'));
    mark.column = int(content.size() - (content.rfind('\n') + 1));
    return mark;
}
} // namespace

YamlNode YamlNode::load(const QString &path)
{
    const std::string content = contentOf(path);
    try {
        std::istringstream stream(content);
        YAML::Parser parser(stream);
        Inspector inspector(path);
        // Not all of them are looked for: there are texts in which the parser finds one more without end.
        if (parser.HandleNextDocument(inspector) && parser.HandleNextDocument(inspector))
            throw ScenarioFault{
                QStringLiteral("%1: holds more than one document, a scenario is one").arg(path)};
        const YAML::Node node = YAML::Load(content);
        if (!node.IsDefined() || node.IsNull())
            throw ScenarioFault{QStringLiteral("%1:1:1: holds no scenario").arg(path)};
        return {node, node.Mark(), QStringLiteral("scenario"), path};
    } catch (const YAML::Exception &exception) {
        const bool isAtEnd = exception.mark.is_null() || exception.msg.starts_with("end of ");
        const YAML::Mark mark = isAtEnd ? endOf(content) : exception.mark;
        throw ScenarioFault{
            placeText(path, mark) + QStringLiteral("is no YAML: ") + QString::fromStdString(exception.msg)};
    }
}

YamlNode::YamlNode(const YAML::Node &node, YAML::Mark mark, QString name, QString file)
    : m_node(node)
    , m_mark(mark)
    , m_name(std::move(name))
    , m_file(std::move(file))
{
}

Place YamlNode::place() const
{
    return {m_file, m_mark.line + 1, m_mark.column + 1};
}

void YamlNode::fail(const QString &message) const
{
    throw ScenarioFault{placeText(m_file, m_mark) + message};
}

QString YamlNode::text() const
{
    if (!m_node.IsScalar())
        fail(QStringLiteral("%1 takes a text, not %2").arg(m_name, kindOf(m_node)));
    return QString::fromStdString(m_node.Scalar());
}

int YamlNode::integer(int least, int most) const
{
    bool ok = false;
    const int number = m_node.IsScalar() ? text().toInt(&ok) : 0;
    if (!ok || number < least || number > most)
        fail(QStringLiteral("%1 takes a whole number from %2 to %3, not %4")
                 .arg(m_name)
                 .arg(least)
                 .arg(most)
                 .arg(kindOf(m_node)));
    return number;
}

double YamlNode::number(double least, double most) const
{
    bool ok = false;
    const double number = m_node.IsScalar() ? text().toDouble(&ok) : 0;
    if (!ok || !(number >= least && number <= most))
        fail(QStringLiteral("%1 takes a number from %2 to %3, not %4")
                 .arg(m_name)
                 .arg(least)
                 .arg(most)
                 .arg(kindOf(m_node)));
    return number;
}

bool YamlNode::boolean() const
{
    return word({QStringLiteral("true"), QStringLiteral("false")}) == QLatin1String("true");
}

std::chrono::milliseconds YamlNode::time() const
{
    const auto time = m_node.IsScalar() ? Quantities::time(text()) : std::nullopt;
    if (!time)
        fail(QStringLiteral("%1 takes a time such as 5 s or 250 ms, not %2").arg(m_name, kindOf(m_node)));
    return *time;
}

QString YamlNode::word(const QStringList &words) const
{
    QString given = m_node.IsScalar() ? text() : QString();
    if (!words.contains(given))
        fail(
            QStringLiteral("%1 is not %2%3").arg(m_name, kindOf(m_node), Spelling::suggestion(given, words)));
    return given;
}

QVariant YamlNode::value() const
{
    const QString written = text();
    const bool isQuoted = m_node.Tag() == "!";
    bool ok = false;
    const int integer = written.toInt(&ok);
    if (ok && !isQuoted)
        return integer;
    const double number = written.toDouble(&ok);
    if (ok && std::isfinite(number) && !isQuoted)
        return number;
    if (!isQuoted && (written == QLatin1String("true") || written == QLatin1String("false")))
        return written == QLatin1String("true");
    return written;
}

std::vector<YamlNode> YamlNode::items() const
{
    if (!m_node.IsSequence())
        fail(QStringLiteral("%1 takes a list, not %2").arg(m_name, kindOf(m_node)));
    std::vector<YamlNode> items;
    for (const YAML::Node &item : m_node)
        items.push_back(YamlNode(item, item.Mark(), m_name, m_file));
    return items;
}

std::vector<YamlNode> YamlNode::entries() const
{
    if (!m_node.IsMap())
        fail(QStringLiteral("%1 takes a map (\"name: value\"), not %2").arg(m_name, kindOf(m_node)));
    std::vector<YamlNode> entries;
    QSet<QString> seen;
    for (const auto &entry : m_node) {
        const YamlNode key(entry.first, entry.first.Mark(), QStringLiteral("a key"), m_file);
        const QString name = key.text();
        if (seen.contains(name))
            key.fail(QStringLiteral("\"%1\" is given twice").arg(name));
        seen.insert(name);
        // Nothing has no place of its own.
        entries.push_back(YamlNode(
            entry.second, entry.second.IsNull() ? entry.first.Mark() : entry.second.Mark(), name, m_file));
    }
    return entries;
}

std::vector<YamlNode> YamlNode::entries(const QStringList &known) const
{
    std::vector<YamlNode> all = entries();
    for (const YamlNode &entry : all) {
        if (!known.contains(entry.name()))
            entry.fail(QStringLiteral("%1 has no \"%2\"%3")
                           .arg(m_name, entry.name(), Spelling::suggestion(entry.name(), known)));
    }
    return all;
}

std::optional<YamlNode> YamlNode::find(const QString &key) const
{
    for (const YamlNode &entry : entries()) {
        if (entry.name() == key)
            return entry;
    }
    return std::nullopt;
}
