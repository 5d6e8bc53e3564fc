#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelLibrary/crypto/TextCipher.h"
#include "support/GuardedBuffer.h"
#include "unit/TorvelLibrary/crypto/Reference.h"

#include <cstring>
#include <fstream>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using reference::base64;
using reference::bytePointer;

const std::string key16 = "0123456789abcdef";
const std::string iv16 = "fedcba9876543210";

std::string fromHex(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    return bytes;
}

std::vector<const CipherKernels*> allTiers() {
    std::vector<const CipherKernels*> tiers;
    for (auto tier = supportedCipherKernels(); *tier != nullptr; ++tier) tiers.push_back(*tier);
    return tiers;
}

struct EveryTier : testing::TestWithParam<const CipherKernels*> {
    AESCipher cipher(std::string_view key, std::optional<std::string_view> iv) {
        return {key, iv, *GetParam()};
    }
    // What is read of an IV and cipher bytes, by every way that there is.
    std::optional<std::string> decrypted(std::string_view key, std::string_view iv, std::string_view bytes) {
        const std::string text = base64(iv) + base64(bytes);
        const auto plain = decryptInSteps(text, base64(iv), key, *GetParam());
        const bool atOnce = GetParam()->decryptFromBase64 != nullptr && iv.size() == 16;
        EXPECT_EQ(decryptAtOnce(text, key, *GetParam()), atOnce ? plain : std::nullopt);
        return plain;
    }
};

// The tiers that decode and decrypt in one pass; a processor may have none.
struct OnePassTier : EveryTier {
    DecryptedText decrypt(const std::string& ivText, const std::string& text, std::size_t blocks) {
        std::string out(16 * blocks + CipherKernels::slack, '\0');
        return GetParam()->decryptFromBase64({bytePointer(key16), 4}, ivText.data(), text.data(),
                                             reinterpret_cast<std::uint8_t*>(out.data()), blocks);
    }
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(OnePassTier);

std::vector<const CipherKernels*> onePassTiers() {
    std::vector<const CipherKernels*> tiers = allTiers();
    std::erase_if(tiers, [](const CipherKernels* tier) { return tier->decryptFromBase64 == nullptr; });
    return tiers;
}

const auto tierName = [](const auto& tier) { return std::string(tier.param->name); };
INSTANTIATE_TEST_SUITE_P(AESCipher, EveryTier, testing::ValuesIn(allTiers()), tierName);
INSTANTIATE_TEST_SUITE_P(AESCipher, OnePassTier, testing::ValuesIn(onePassTiers()), tierName);

std::string transformed(decltype(CipherKernels::cbcEncrypt) transform, const AESKeySchedule& schedule,
                        std::string_view iv, std::string_view text) {
    std::string out(text.size(), '\0');
    transform(schedule, bytePointer(iv), bytePointer(text), reinterpret_cast<std::uint8_t*>(out.data()),
              text.size() / aesBlockSize);
    return out;
}

// The thousand operations of a line of a Monte Carlo set (AESAVS 6.4.2): each takes the result before last.
std::string thousandfold(decltype(CipherKernels::cbcEncrypt) transform, const AESKeySchedule& schedule,
                         const std::string& iv, std::string text, bool encrypting) {
    std::string chain = iv, result = iv, next = iv;
    for (int i = 0; i < 1000; ++i) {
        next = std::exchange(result, transformed(transform, schedule, chain, text));
        chain = encrypting ? result : text;
        text = next;
    }
    return result;
}

// NIST's validation suite and the examples of FIPS-197 and SP 800-38A, as vectors/make_aes_vectors.py has
// them.
TEST_P(EveryTier, AgreesWithThePublishedVectors) {
    std::ifstream file(TORVEL_VECTORS "/AES-CBC.txt");
    std::size_t lines = 0;
    for (std::string set, fields[4]; file >> set >> fields[0] >> fields[1] >> fields[2] >> fields[3];
         ++lines) {
        const std::string key = fromHex(fields[0]), iv = fromHex(fields[1]), plain = fromHex(fields[2]),
                          cipherText = fromHex(fields[3]);
        AESKeySchedule schedule;
        GetParam()->expandKey({bytePointer(key), static_cast<unsigned>(key.size() / 4)}, schedule);
        const auto encrypt = GetParam()->cbcEncrypt, decrypt = GetParam()->cbcDecrypt;
        if (set == "MonteCarloEncrypt") {
            ASSERT_EQ(thousandfold(encrypt, schedule, iv, plain, true), cipherText) << lines;
        } else if (set == "MonteCarloDecrypt") {
            ASSERT_EQ(thousandfold(decrypt, schedule, iv, cipherText, false), plain) << lines;
        } else {
            ASSERT_EQ(transformed(encrypt, schedule, iv, plain), cipherText) << set << " " << fields[0];
            ASSERT_EQ(transformed(decrypt, schedule, iv, cipherText), plain) << set << " " << fields[0];
        }
        if (set != "FIPS-197") continue;
        for (std::size_t blocks : {1, 4, 9, 19}) {
            std::string in, expected, out(16 * blocks, '\0');
            for (std::size_t i = 0; i < blocks; ++i) in += plain, expected += cipherText;
            GetParam()->encryptBlocks(schedule, bytePointer(in), reinterpret_cast<std::uint8_t*>(out.data()),
                                      blocks);
            EXPECT_EQ(out, expected) << key.size() << " " << blocks;
        }
    }
    EXPECT_EQ(lines, 1675U);
}

TEST_P(EveryTier, AgreesWithOpenSSLAtEveryLength) {
    for (std::size_t keySize : {16, 24, 32}) {
        for (std::size_t size = 0; size <= 1100; ++size) {
            const std::string key = reference::bytes(keySize, 1), iv = reference::bytes(16, 2);
            const std::string plain = reference::bytes(size, static_cast<unsigned>(size));
            const std::string expected = reference::encrypt(key, iv, plain);
            ASSERT_EQ(cipher(key, iv).encrypt(plain).value().raw(), expected) << keySize << " " << size;
            ASSERT_EQ(cipher(key, iv).decrypt(expected).value().raw(), plain) << keySize << " " << size;
            IVText ivText;
            iv.copy(ivText.data(), ivText.size());
            ASSERT_EQ(encryptText(plain, key, ivText, *GetParam()), iv + base64(expected)) << size;
            std::string text = plain;
            for (char& byte : text) byte &= 0x7F;
            ASSERT_EQ(decrypted(key, iv, reference::encrypt(key, iv, text)), text) << keySize << " " << size;
        }
    }
}

// The last byte of the plain text says how many bytes go, whatever the others are.
TEST_P(EveryTier, RemovesPaddingWithoutCheckingIt) {
    const struct {
        const char* name;
        char last;
        std::size_t kept;  // of 48 bytes
    } rows[] = {
        {"none", 0, 48},
        {"one", 1, 47},
        {"a block, filler wrong", 16, 32},
        {"beyond a block", 17, 31},
        {"everything", 48, 0},
        {"more than there is", 49, 48},
        {"largest", '\xFF', 48},
    };
    for (const auto& row : rows) {
        const std::string plain = std::string(47, 'x') + row.last, kept = plain.substr(0, row.kept);
        const std::string bytes = reference::encryptUnpadded(key16, iv16, plain);
        EXPECT_EQ(cipher(key16, iv16).decrypt(bytes).value().raw(), kept) << row.name;
        const bool isText = kept.empty() || kept.back() != '\xFF';
        EXPECT_EQ(decrypted(key16, iv16, bytes), isText ? std::optional(kept) : std::nullopt) << row.name;
    }
}

TEST_P(EveryTier, CutsTheFirstBlockToAShortIV) {
    const std::string plain = "sixteen bytes ..and then some more";
    const std::string bytes = reference::encrypt(key16, iv16, plain);
    for (std::size_t size : {0, 1, 15}) {
        const std::string expected = plain.substr(0, size) + plain.substr(16);
        EXPECT_EQ(cipher(key16, iv16.substr(0, size)).decrypt(bytes).value().raw(), expected) << size;
        EXPECT_EQ(decrypted(key16, iv16.substr(0, size), bytes), expected) << size;
    }
    EXPECT_EQ(cipher(key16, iv16 + "xy").decrypt(bytes).value().raw(), plain);
    EXPECT_EQ(cipher(key16, iv16 + "xy").encrypt(plain).value().raw(), bytes);
}

TEST_P(EveryTier, TellsFailuresApart) {
    using Error = AESCipher::Error;
    const AESCipher::Failure missing = CBCBlockMode::BlockError::MissingInitializationVector;
    EXPECT_EQ(cipher(key16, std::nullopt).encrypt("text").error(), missing);
    EXPECT_EQ(cipher(key16, std::nullopt).decrypt(iv16).error(), missing);
    EXPECT_EQ(cipher(key16, "short").encrypt("text").error(),
              AESCipher::Failure(Error::invalidInitializationVector));
    // The key is looked at last.
    EXPECT_EQ(cipher("bad key", std::nullopt).decrypt("17 bytes of text.").error(),
              AESCipher::Failure(Error::blockSizeExceeded));
}

TEST_P(OnePassTier, OnePassRefusesWhatIsNotBase64) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t blocks : {1, 2, 3, 44, 45, 46}) {
        const std::string valid = base64(reference::bytes(16 * blocks, 4)), iv = base64(iv16);
        const std::size_t padding = valid.size() - valid.find_last_not_of('=') - 1;
        for (std::size_t offset = 0; offset < 22; ++offset) {
            std::string broken = iv;
            broken[offset] = '=';
            ASSERT_EQ(decrypt(broken, valid, blocks), DecryptedText::notBase64) << offset;
        }
        for (std::size_t offset = 0; offset < valid.size(); ++offset) {
            const bool inPadding = offset >= valid.size() - padding;
            for (int byte = 0; byte < 256; byte += offset % 64 == 7 ? 1 : 61) {  // 61 meets "=", too
                std::string text = valid;
                text[offset] = static_cast<char>(byte);
                const bool good = inPadding ? byte == '=' : alphabet.find(text[offset]) != std::string::npos;
                ASSERT_EQ(decrypt(iv, text, blocks) != DecryptedText::notBase64, good)
                    << blocks << " blocks, " << byte << " at " << offset;
            }
        }
    }
}

TEST_P(OnePassTier, OnePassSeesEveryByteThatIsNotASCII) {
    for (std::size_t size : {1, 31, 47, 600, 767}) {
        std::string plain(size, 'x');
        const auto isASCII = [&] {
            const std::string text = base64(reference::encrypt(key16, iv16, plain));
            return decrypt(base64(iv16), text, size / 16 + 1) == DecryptedText::ascii;
        };
        EXPECT_TRUE(isASCII()) << size;
        for (char& byte : plain) {
            byte = '\x80';
            ASSERT_FALSE(isASCII()) << size << " " << &byte - plain.data();
            byte = 'x';
        }
    }
}

TEST_P(OnePassTier, StaysInsideItsBuffers) {
    const AESKey key = {bytePointer(key16), 4};
    using Guard = GuardedBuffer::Guard;
    for (std::size_t size = 0; size < 2000; ++size) {
        const Guard guard = size % 2 == 0 ? Guard::before : Guard::behind;
        const std::size_t length = size / 2, blocks = length / 16 + 1, textSize = (16 * blocks + 2) / 3 * 4;
        GuardedBuffer plain(std::string(length, 'x'), guard), ivBytes(iv16, guard), iv(base64(iv16), guard),
            written(textSize + CipherKernels::slack, guard), out(16 * blocks + CipherKernels::slack, guard);
        GetParam()->encryptToBase64(key, ivBytes.bytes(), plain.bytes(), length, written.text());
        GuardedBuffer text({written.text(), textSize}, guard);
        ASSERT_EQ(GetParam()->decryptFromBase64(key, iv.text(), text.text(), out.bytes(), blocks),
                  DecryptedText::ascii);
        ASSERT_EQ(std::memcmp(out.text(), plain.text(), length), 0) << length;
    }
}

}  // namespace
}  // namespace torvel
