// Run under Valgrind: key and plain text are marked as undefined, so that memcheck reports every branch and
// every index that depends on one of them. With the argument "table" it indexes by a key byte, to show that
// it would.
#include "TorvelLibrary/crypto/CipherKernels.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

#include <valgrind/memcheck.h>

using namespace torvel;

namespace {

constexpr std::size_t blocks = 21;  // enough for every width that a tier works in, and a rest
constexpr std::size_t textSize = ((blocks + 1) * aesBlockSize + 2) / 3 * 4;

void exercise(const CipherKernels& tier, unsigned keyWords) {
    std::uint8_t key[32] = {}, iv[aesBlockSize] = {}, plain[blocks * aesBlockSize] = {};
    std::uint8_t out[sizeof plain], back[sizeof plain];
    VALGRIND_MAKE_MEM_UNDEFINED(key, sizeof key);
    VALGRIND_MAKE_MEM_UNDEFINED(plain, sizeof plain);
    AESKeySchedule schedule;
    tier.expandKey({key, keyWords}, schedule);
    tier.encryptBlocks(schedule, plain, out, blocks);
    tier.cbcEncrypt(schedule, iv, plain, out, blocks);
    tier.cbcDecrypt(schedule, iv, out, back, blocks);
    VALGRIND_MAKE_MEM_DEFINED(back, sizeof back);
    if (tier.encryptToBase64 != nullptr) {
        char text[textSize + CipherKernels::slack];
        std::uint8_t read[(blocks + 1) * aesBlockSize + CipherKernels::slack];
        tier.encryptToBase64({key, keyWords}, iv, plain, sizeof plain, text);
        VALGRIND_MAKE_MEM_DEFINED(text, sizeof text);  // what is sent is no secret
        tier.decryptFromBase64({key, keyWords}, "AAAAAAAAAAAAAAAAAAAAAA==", text, read, blocks + 1);
        VALGRIND_MAKE_MEM_DEFINED(read, sizeof read);
        std::memcpy(back, read, sizeof back);
    }
    VALGRIND_MAKE_MEM_DEFINED(plain, sizeof plain);
    if (std::memcmp(back, plain, sizeof back) != 0) std::puts("the text did not come back");
}

}  // namespace

int main(int count, char** arguments) {
    for (auto tier = supportedCipherKernels(); *tier != nullptr; ++tier) {
        std::printf("%s\n", (*tier)->name);
        for (const unsigned keyWords : {4U, 6U, 8U}) exercise(**tier, keyWords);
    }
    if (count == 2 && std::strcmp(arguments[1], "table") == 0) {
        static const volatile char table[256] = {};
        std::uint8_t key = 0;
        VALGRIND_MAKE_MEM_UNDEFINED(&key, 1);
        return table[key];
    }
    return 0;
}
