#pragma once

#include "TorvelPlatform/security/SecKey.h"

#include <optional>

namespace torvel {

// The server's public key. Despite the name no PEM is read here: certificates are DER files.
class PEMUtils {
  public:
    // The key of the certificate `encryptionCertName` (type "der") of the main bundle, read once and then
    // kept for the life of the process, whatever the name becomes. Absent while there is no such resource.
    // A file that cannot be read or is no certificate stops the process: it is a fault of the deployment.
    // The certificate is not judged: no chain, no dates. Any thread.
    static std::optional<SecKey> getSecKey();
};

}  // namespace torvel
