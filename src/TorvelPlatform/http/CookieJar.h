#pragma once  // internal

#include "TorvelPlatform/http/Curl.h"
namespace torvel {

// The cookies of the process, in memory alone. All sessions share them: a session that takes another's place
// keeps the user logged in. Only cookies are shared; connections and TLS sessions never are, because trust is
// decided per session. Any thread.
CURLSH* sharedCookieJar();

}  // namespace torvel
