#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace torvel {

struct CBCBlockMode {
    enum class BlockError { MissingInitializationVector };
};

struct PKCS7 {
    // Drops as many bytes as the last one says, unless it is 0 or more than there are. The padding bytes
    // themselves are not checked, and the count may exceed a block: deliberate, existing servers rely on
    // both. No bytes at all stop the process.
    static std::string_view remove(std::string_view bytes);
};

// AES (FIPS-197) in CBC mode with PKCS#7 padding, for one message. The key's length chooses the variant: 16,
// 24 or 32 bytes are AES-128, -192 or -256. Any other length stops the process, when the first block is about
// to be transformed. Key and IV are borrowed and must outlive the cipher.
class AESCipher {
  public:
    enum class Error {
        blockSizeExceeded,
        dataPaddingRequired,
        invalidKeyOrInitializationVector,
        invalidInitializationVector,
    };
    using Failure = std::variant<Error, CBCBlockMode::BlockError>;

    AESCipher(std::string_view key, std::optional<std::string_view> iv,
              const CipherKernels& kernels = cipherKernels())
        : m_key(key), m_iv(iv), m_kernels(kernels) {}
    ~AESCipher();
    AESCipher(const AESCipher&) = delete;
    AESCipher& operator=(const AESCipher&) = delete;

    // Bytes that an IV has beyond a block are ignored. One shorter than a block does not encrypt
    // (invalidInitializationVector); decrypting with it cuts the first block to its length.
    Outcome<Data, Failure> encrypt(std::string_view bytes);

    // A length that is not a multiple of 16 is blockSizeExceeded. No bytes at all stop the process.
    Outcome<Data, Failure> decrypt(std::string_view bytes);

  private:
    const AESKeySchedule& schedule();

    std::string_view m_key;
    std::optional<std::string_view> m_iv;
    const CipherKernels& m_kernels;
    AESKeySchedule m_schedule;
    bool m_expanded = false;
};

}  // namespace torvel
