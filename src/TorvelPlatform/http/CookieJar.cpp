#include "TorvelPlatform/http/CookieJar.h"

#include <array>
#include <mutex>

namespace torvel {
namespace {

using Locks = std::array<std::mutex, CURL_LOCK_DATA_LAST>;

void lock(CURL*, curl_lock_data data, curl_lock_access, void* locks) {
    (*static_cast<Locks*>(locks))[data].lock();
}

void unlock(CURL*, curl_lock_data data, void* locks) { (*static_cast<Locks*>(locks))[data].unlock(); }

CURLSH* makeJar() {
    CURLSH* const jar = curl_share_init();
    curl_share_setopt(jar, CURLSHOPT_LOCKFUNC, lock);
    curl_share_setopt(jar, CURLSHOPT_UNLOCKFUNC, unlock);
    curl_share_setopt(jar, CURLSHOPT_USERDATA, new Locks);
    curl_share_setopt(jar, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    return jar;
}

}  // namespace

CURLSH* sharedCookieJar() {
    static CURLSH* const jar = makeJar();  // never freed: session threads use it to the end
    return jar;
}

}  // namespace torvel
