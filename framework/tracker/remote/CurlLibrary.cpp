// SPDX-License-Identifier: MIT
#include "CurlLibrary.h"

#include "ForeignLibrary.h"

const CurlLibrary *CurlLibrary::load(QString *error)
{
    struct Loaded
    {
        CurlLibrary functions;
        QString problem;
        bool isUsable = functions.resolve(&problem);
    };
    static const Loaded loaded;
    *error = loaded.problem;
    return loaded.isUsable ? &loaded.functions : nullptr;
}

bool CurlLibrary::resolve(QString *error)
{
    // As Debian's library with this version of the interface is called, and everybody else's.
    ForeignLibrary library({"libcurl-gnutls.so.4", "libcurl.so.4"});
    decltype(&::curl_global_init) initialize = nullptr;
    library.find(initialize, "curl_global_init");
    library.find(easyInit, "curl_easy_init");
    library.find(easyCleanup, "curl_easy_cleanup");
    library.find(easySetOption, "curl_easy_setopt");
    library.find(easyGetInfo, "curl_easy_getinfo");
    library.find(easyErrorText, "curl_easy_strerror");
    library.find(multiInit, "curl_multi_init");
    library.find(multiCleanup, "curl_multi_cleanup");
    library.find(multiAdd, "curl_multi_add_handle");
    library.find(multiRemove, "curl_multi_remove_handle");
    library.find(multiPerform, "curl_multi_perform");
    library.find(multiPoll, "curl_multi_poll");
    library.find(multiWakeUp, "curl_multi_wakeup");
    library.find(multiReadInfo, "curl_multi_info_read");
    library.find(listAppend, "curl_slist_append");
    library.find(listFree, "curl_slist_free_all");
    if (library.isWhole())
        initialize(CURL_GLOBAL_DEFAULT);
    else
        *error = QStringLiteral("libcurl cannot be used: %1").arg(library.errorText());
    return library.isWhole();
}
