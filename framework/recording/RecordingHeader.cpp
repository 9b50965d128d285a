// SPDX-License-Identifier: MIT
#include "RecordingHeader.h"

#include "JsonText.h"

std::string RecordingHeader::line() const
{
    std::string json = R"({"kelvo-recording":)";
    JsonText::appendNumber(json, FormatVersion);
    const auto append = [&json](std::string_view name, const QString &text) {
        json += ',';
        JsonText::appendName(json, name);
        json += ':';
        JsonText::appendText(json, text);
    };
    append("program", program);
    append("version", version);
    append("revision", revision);
    append("started", started.toUTC().toString(Qt::ISODateWithMs));
    json += R"(,"plug-ins":)";
    JsonText::appendValue(json, QMetaType::fromType<QStringList>(), &plugins);
    json += R"(,"pid":)";
    JsonText::appendNumber(json, pid);
    json += "}\n";
    return json;
}
