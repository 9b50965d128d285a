// SPDX-License-Identifier: MIT
#include "RemoteLibraries.h"

namespace {
// What is wrong with an address; empty: nothing. It is not repeated, were there a password in it.
QString faultOf(const QUrl &url)
{
    if (!url.userInfo().isEmpty())
        return QStringLiteral(
            "KELVO_TRACKER: names and passwords belong into ~/.netrc, not into the address of a library");
    const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    if (!url.isValid() || !isWeb || url.host().isEmpty())
        return QStringLiteral("KELVO_TRACKER: \"%1\" is no http address of a library")
            .arg(url.toDisplayString(QUrl::RemoveUserInfo));
    return {};
}
} // namespace

RemoteLibraries RemoteLibraries::fromEnvironment()
{
    RemoteLibraries libraries;
    const QStringList words
        = qEnvironmentVariable("KELVO_TRACKER").simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words) {
        if (word == QLatin1String("bus"))
            continue;
        const QUrl url(word, QUrl::StrictMode);
        const QString fault = faultOf(url.isValid() ? url : QUrl(word, QUrl::TolerantMode));
        if (!fault.isEmpty())
            libraries.errors.append(fault);
        else if (!libraries.endpoints.contains(url))
            libraries.endpoints.append(url);
    }
    return libraries;
}
