#include "TorvelPlatform/dispatch/LibraryThread.h"

#include <string>

#include <pthread.h>
#include <signal.h>

namespace torvel {

void beginLibraryThread(std::string_view label) {
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT}) sigdelset(&signals, fault);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    constexpr std::size_t longestName = 15;
    const std::string name(label.substr(label.rfind('.') + 1).substr(0, longestName));
    pthread_setname_np(pthread_self(), name.c_str());
}

}  // namespace torvel
