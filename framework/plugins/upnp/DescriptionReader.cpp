// SPDX-License-Identifier: MIT
#include "DescriptionReader.h"

#include "DescriptionXml.h"
#include "DeviceDescription.h"

#include <QByteArray>

namespace {
// Bytes. What is longer describes no device.
constexpr qsizetype longestDescription = 500'000;
} // namespace

struct DescriptionReader::Reading
{
    Handler handler; // null once nobody waits any more
    Upnp::Kind kind;
    GlibHandles::Object<GUPnPDeviceInfo> device;
    GlibHandles::Object<SoupMessage> message = {};
    GlibHandles::Object<GCancellable> cancellable{g_cancellable_new()};
    QByteArray text = {};

    void finish(const std::optional<Upnp::Description> &description)
    {
        if (const Handler listener = std::exchange(handler, nullptr))
            listener(description);
    }
};

DescriptionReader::DescriptionReader(GUPnPDeviceInfo *device, Upnp::Kind kind, Handler handler)
    : m_reading(std::make_shared<Reading>(Reading{std::move(handler), kind, GlibHandles::share(device)}))
{
    // GUPnP has read it from there, so it is an address.
    m_reading->message.reset(soup_message_new("GET", gupnp_device_info_get_location(device)));
    soup_session_send_async(gupnp_context_get_session(gupnp_device_info_get_context(device)),
        m_reading->message.get(), G_PRIORITY_DEFAULT, m_reading->cancellable.get(), opened,
        new std::shared_ptr<Reading>(m_reading));
}

DescriptionReader::~DescriptionReader()
{
    m_reading->handler = nullptr;
    g_cancellable_cancel(m_reading->cancellable.get());
}

void DescriptionReader::opened(GObject *session, GAsyncResult *result, void *data)
{
    std::unique_ptr<std::shared_ptr<Reading>> owner(static_cast<std::shared_ptr<Reading> *>(data));
    Reading &reading = **owner;
    GlibHandles::Error error;
    const GlibHandles::Object<GInputStream> stream(
        soup_session_send_finish(SOUP_SESSION(session), result, error.out()));
    if (!stream || soup_message_get_status(reading.message.get()) != SOUP_STATUS_OK) {
        reading.finish({});
        return;
    }
    reading.text.resize(longestDescription);
    g_input_stream_read_all_async(stream.get(), reading.text.data(), gsize(reading.text.size()),
        G_PRIORITY_DEFAULT, reading.cancellable.get(), read, owner.release());
}

void DescriptionReader::read(GObject *stream, GAsyncResult *result, void *data)
{
    const std::unique_ptr<std::shared_ptr<Reading>> owner(static_cast<std::shared_ptr<Reading> *>(data));
    Reading &reading = **owner;
    GlibHandles::Error error;
    gsize size = 0;
    const bool isRead = g_input_stream_read_all_finish(G_INPUT_STREAM(stream), result, &size, error.out());
    if (!isRead || qsizetype(size) >= longestDescription) {
        reading.finish({});
        return;
    }
    reading.text.truncate(qsizetype(size));
    const auto news = DescriptionXml::device(reading.text, reading.device.get());
    reading.finish(news ? std::optional(DeviceDescription::read(news.get(), reading.kind)) : std::nullopt);
}
