#include "TorvelPlatform/security/OpenSSL.h"

namespace torvel {

TORVEL_OPENSSL_FUNCTIONS(TORVEL_DEFINE_FUNCTION)

void loadOpenSSL() {
    static const RuntimeFunction functions[] = {TORVEL_OPENSSL_FUNCTIONS(TORVEL_RUNTIME_FUNCTION)};
    // Brings libcrypto, whose functions are found with its own.
    [[maybe_unused]] static const bool loaded = (loadFunctions("libssl.so.3", functions), true);
}

}  // namespace torvel
