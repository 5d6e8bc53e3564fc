#include "TorvelPlatform/dispatch/ThreadName.h"

#include <string>

#include <pthread.h>

namespace torvel {

void nameCurrentThread(std::string_view label) {
    constexpr std::size_t longestName = 15;
    const std::string name(label.substr(label.rfind('.') + 1).substr(0, longestName));
    pthread_setname_np(pthread_self(), name.c_str());
}

}  // namespace torvel
