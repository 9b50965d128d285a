// SPDX-License-Identifier: MIT
#include "AudioOutput.h"

#include "KelvoMessageHandler.h"

namespace {
QString factoryOf(GstElement *element)
{
    const GstElementFactory *factory = gst_element_get_factory(element);
    return factory ? QString::fromLatin1(GST_OBJECT_NAME(factory)) : QString();
}

/// The sink proper within an output that may be made of several elements.
QString sinkWithin(GstElement *output)
{
    if (!GST_IS_BIN(output))
        return factoryOf(output);
    QString found;
    const GstHandles::Iterator iterator(gst_bin_iterate_recurse(GST_BIN(output)));
    const auto look = [](const GValue *value, gpointer result) {
        auto *element = GST_ELEMENT(g_value_get_object(value));
        if (GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SINK) && !GST_IS_BIN(element))
            *static_cast<QString *>(result) = factoryOf(element);
    };
    while (gst_iterator_foreach(iterator.get(), look, &found) == GST_ITERATOR_RESYNC)
        gst_iterator_resync(iterator.get());
    return found;
}
} // namespace

GstHandles::Element AudioOutput::make(const QString &description)
{
    if (!description.isEmpty()) {
        GlibHandles::Error problem;
        GstHandles::Element output = GstHandles::adopt(
            gst_parse_bin_from_description(description.toUtf8().constData(), TRUE, problem.out()));
        if (output && !problem)
            return output;
        qCWarning(lcKelvo) << "The audio output" << description
                           << "cannot be used:" << (problem ? problem->message : "no such element");
    }
    GstHandles::Element automatic = GstHandles::adopt(gst_element_factory_make("autoaudiosink", nullptr));
    return automatic ? std::move(automatic) : makeSilent();
}

GstHandles::Element AudioOutput::makeSilent()
{
    GstHandles::Element clock = GstHandles::adopt(gst_element_factory_make("fakesink", nullptr));
    if (clock)
        g_object_set(clock.get(), "sync", TRUE, nullptr);
    return clock;
}

QString AudioOutput::describe(GstElement *output)
{
    return isSilent(output) ? QStringLiteral("none (silent clock)") : sinkWithin(output);
}

bool AudioOutput::isSilent(GstElement *output)
{
    return sinkWithin(output) == QLatin1String("fakesink");
}
