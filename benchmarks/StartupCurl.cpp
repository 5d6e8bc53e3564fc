// The first https answer by the bare client. The URL, the bundle of certificates and the folder of
// certificates are its arguments: where Debian's defaults have theirs, in its form. Without a bundle ("") it
// does the least that an https request with this library takes.
#include <cstddef>

#include <curl/curl.h>
#include <unistd.h>

int main(int, char** arguments) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    CURL* const easy = curl_easy_init();
    curl_easy_setopt(easy, CURLOPT_URL, arguments[1]);
    curl_easy_setopt(easy, CURLOPT_CAINFO, *arguments[2] != 0 ? arguments[2] : nullptr);
    curl_easy_setopt(easy, CURLOPT_CAPATH, arguments[3]);
    curl_easy_setopt(
        easy, CURLOPT_WRITEFUNCTION, +[](char*, std::size_t, std::size_t size, void*) { return size; });
    _exit(curl_easy_perform(easy) == CURLE_OK ? 0 : 1);
}
