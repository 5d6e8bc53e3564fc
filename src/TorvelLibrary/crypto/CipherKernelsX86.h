#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKernels.h"

namespace torvel {

extern const CipherKernels aesniCipherKernels;  // AES, SSSE3, SSE4.1

}  // namespace torvel
