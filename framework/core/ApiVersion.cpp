// SPDX-License-Identifier: MIT
#include "ApiVersion.h"

#include "KelvoPlugin.h"

#include <QRegularExpression>

#include <string_view>

#define KELVO_TEXT(word) #word
#define KELVO_VALUE_TEXT(macro) KELVO_TEXT(macro)
static_assert(std::string_view(KELVO_API_VERSION)
        == KELVO_VALUE_TEXT(KELVO_API_VERSION_MAJOR) "." KELVO_VALUE_TEXT(KELVO_API_VERSION_MINOR),
    "the text must say what the numbers say");

QString ApiVersion::defectOf(const QString &interface)
{
    return defectOf(interface, KELVO_API_VERSION_MAJOR, KELVO_API_VERSION_MINOR);
}

QString ApiVersion::defectOf(const QString &interface, int major, int minor)
{
    if (interface.isEmpty())
        return QStringLiteral("not a plug-in");
    static const QRegularExpression form(
        QStringLiteral("^org\\.kelvo\\.Plugin/([0-9]{1,4})\\.([0-9]{1,4})\\z"));
    const QRegularExpressionMatch match = form.match(interface);
    if (!match.hasMatch())
        return QStringLiteral("made for the interface %1, not for org.kelvo.Plugin").arg(interface);
    const int itsMajor = match.captured(1).toInt();
    const int itsMinor = match.captured(2).toInt();
    if (itsMajor == major && itsMinor <= minor)
        return {};
    const QString remedy = itsMajor > major || (itsMajor == major && itsMinor > minor)
        ? QStringLiteral("it needs a newer program, or has to be built anew with the headers of this one")
        : QStringLiteral("it has to be built anew with the headers of this program");
    return QStringLiteral("made for version %1.%2 of the plug-in API (%3), this program has %4.%5: %6")
        .arg(itsMajor)
        .arg(itsMinor)
        .arg(interface)
        .arg(major)
        .arg(minor)
        .arg(remedy);
}
