// SPDX-License-Identifier: MIT
#include "GlibLog.h"

#include "KelvoMessageHandler.h"

#include <QElapsedTimer>
#include <QString>

#include <cstdarg>
#include <cstdio>

#include <glib.h>
#include <libxml/xmlerror.h>

namespace {
constexpr const char *domains[] = {"gupnp", "gupnp-context", "gupnp-context-filter", "gupnp-context-manager",
    "gupnp-control-point", "gupnp-device", "gupnp-device-info", "gupnp-linux-context-manager",
    "gupnp-resource-factory", "gupnp-service-info", "gupnp-service-introspection", "gupnp-service-proxy",
    "gupnp-xml-doc", "gupnp-av", "gssdp", "gssdp-client", "gssdp-net", "gssdp-resource-browser", "libsoup",
    // Some of their files name no domain.
    nullptr};

void log(const char *domain, GLogLevelFlags level, const char *message, void *)
{
    const QString text = QString::fromUtf8(message).trimmed();
    if (level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING))
        qCWarning(lcKelvo).noquote().nospace() << (domain ? domain : "GLib") << ": " << text;
    else if (level & G_LOG_LEVEL_MESSAGE)
        qCDebug(lcKelvo).noquote().nospace() << (domain ? domain : "GLib") << ": " << text;
}

/// A text may be wrong in each of its characters, and each would be three lines.
bool isTooMuch()
{
    constexpr int most = 30; // lines in a second
    thread_local QElapsedTimer second;
    thread_local int lines = 0;
    if (!second.isValid() || second.hasExpired(1000)) {
        second.start();
        lines = 0;
    }
    return ++lines > most;
}

// The signature is libxml2's.
__attribute__((format(printf, 2, 3))) void logXml(void *, const char *format, ...)
{
    char text[500];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    // It comes in pieces: also the line that is wrong, and a mark below the place.
    const QString line = QString::fromUtf8(text).trimmed();
    if (line.size() > 1 && !isTooMuch())
        qCDebug(lcKelvo).noquote() << "XML of a device:" << line;
}
} // namespace

void GlibLog::catchWarnings()
{
    static const bool isDone = [] {
        constexpr int levels = G_LOG_LEVEL_MASK | G_LOG_FLAG_RECURSION | G_LOG_FLAG_FATAL;
        for (const char *domain : domains)
            g_log_set_handler(domain, GLogLevelFlags(levels), log, nullptr);
        return true;
    }();
    Q_UNUSED(isDone)
}

void GlibLog::catchXmlErrors()
{
    xmlSetGenericErrorFunc(nullptr, logXml);
}
