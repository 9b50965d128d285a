// SPDX-License-Identifier: MIT
#include "CharsetGuess.h"

#include <memory>

#include <uchardet/uchardet.h>

QByteArray CharsetGuess::of(const QByteArray &bytes)
{
    const std::unique_ptr<uchardet, decltype(&uchardet_delete)> detector(uchardet_new(), uchardet_delete);
    if (uchardet_handle_data(detector.get(), bytes.constData(), size_t(bytes.size())) != 0)
        return {};
    uchardet_data_end(detector.get());
    return uchardet_get_charset(detector.get());
}
