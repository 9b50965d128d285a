// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <curl/curl.h>

/// The functions of libcurl that are used here. It is loaded when the first library on another machine is asked, not with the
/// program: it brings a dozen more, and few have such a library.
struct CurlLibrary
{
    /// The functions, the same ones each time; null, with the reason, fit to be shown, when they are not to be had. Any
    /// thread; the first call takes as long as loading does.
    static const CurlLibrary *load(QString *error);

    decltype(&::curl_easy_init) easyInit = nullptr;
    decltype(&::curl_easy_cleanup) easyCleanup = nullptr;
    decltype(&::curl_easy_setopt) easySetOption = nullptr;
    decltype(&::curl_easy_getinfo) easyGetInfo = nullptr;
    decltype(&::curl_easy_strerror) easyErrorText = nullptr;
    decltype(&::curl_multi_init) multiInit = nullptr;
    decltype(&::curl_multi_cleanup) multiCleanup = nullptr;
    decltype(&::curl_multi_add_handle) multiAdd = nullptr;
    decltype(&::curl_multi_remove_handle) multiRemove = nullptr;
    decltype(&::curl_multi_perform) multiPerform = nullptr;
    decltype(&::curl_multi_poll) multiPoll = nullptr;
    decltype(&::curl_multi_wakeup) multiWakeUp = nullptr;
    decltype(&::curl_multi_info_read) multiReadInfo = nullptr;
    decltype(&::curl_slist_append) listAppend = nullptr;
    decltype(&::curl_slist_free_all) listFree = nullptr;

private:
    bool resolve(QString *error);
};
