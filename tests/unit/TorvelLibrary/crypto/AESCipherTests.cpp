#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelLibrary/crypto/TextCipher.h"
#include "unit/TorvelLibrary/crypto/Reference.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

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

class EveryTier : public testing::TestWithParam<const CipherKernels*> {
  protected:
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
class OnePassTier : public EveryTier {
  protected:
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

// FIPS-197, appendix C.
TEST_P(EveryTier, EncryptsTheBlocksOfTheStandard) {
    const std::string plain = fromHex("00112233445566778899aabbccddeeff");
    const std::string key = fromHex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");
    struct Row {
        std::size_t keySize;
        const char* cipher;
    };
    const Row rows[] = {
        {16, "69c4e0d86a7b0430d8cdb78070b4c55a"},
        {24, "dda97ca4864cdfe06eaf70a0ec0d7191"},
        {32, "8ea2b7ca516745bfeafc49904b496089"},
    };
    for (const Row& row : rows) {
        AESKeySchedule schedule;
        GetParam()->expandKey({bytePointer(key), static_cast<unsigned>(row.keySize / 4)}, schedule);
        for (std::size_t blocks : {1, 4, 9, 19}) {
            std::string in, out(16 * blocks, '\0'), expected;
            for (std::size_t i = 0; i < blocks; ++i) in += plain, expected += fromHex(row.cipher);
            GetParam()->encryptBlocks(schedule, bytePointer(in), reinterpret_cast<std::uint8_t*>(out.data()),
                                      blocks);
            EXPECT_EQ(out, expected) << row.keySize << " " << blocks;
        }
    }
}

// SP 800-38A, appendix F.2. The cipher adds a padding block, which the vectors do not have.
TEST_P(EveryTier, ChainsTheBlocksOfTheStandard) {
    const std::string plain = fromHex(
        "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
        "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
    const std::string iv = fromHex("000102030405060708090a0b0c0d0e0f");
    struct Row {
        const char* key;
        const char* cipher;
    };
    const Row rows[] = {
        {"2b7e151628aed2a6abf7158809cf4f3c",
         "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
         "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
        {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
         "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
         "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
        {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
         "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
         "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
    };
    for (const Row& row : rows) {
        const std::string key = fromHex(row.key);
        const auto encrypted = cipher(key, iv).encrypt(plain);
        EXPECT_EQ(encrypted.value().raw().substr(0, 64), fromHex(row.cipher)) << row.key;
        EXPECT_EQ(cipher(key, iv).decrypt(encrypted.value().raw()).value().raw(), plain) << row.key;
    }
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
    struct Row {
        const char* name;
        char last;
        std::size_t kept;  // of 48 bytes
    };
    const Row rows[] = {
        {"none", 0, 48},
        {"one", 1, 47},
        {"a block, filler wrong", 16, 32},
        {"beyond a block", 17, 31},
        {"everything", 48, 0},
        {"more than there is", 49, 48},
        {"largest", '\xFF', 48},
    };
    for (const Row& row : rows) {
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
        const std::string valid = base64(reference::bytes(16 * blocks, 4));
        const std::string iv = base64(iv16);
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

// Buffers that end where no memory follows.
class GuardedBuffer {
  public:
    explicit GuardedBuffer(std::size_t size) : m_size(size) {
        m_page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        m_map = static_cast<char*>(
            mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(m_map + m_page, m_page, PROT_NONE);
    }
    ~GuardedBuffer() { munmap(m_map, 2 * m_page); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    char* text() { return m_map + m_page - m_size; }
    std::uint8_t* bytes() { return reinterpret_cast<std::uint8_t*>(text()); }

  private:
    std::size_t m_size, m_page;
    char* m_map;
};

TEST_P(OnePassTier, StaysInsideItsBuffers) {
    const AESKey key = {bytePointer(key16), 4};
    GuardedBuffer iv(24);
    std::memcpy(iv.text(), base64(iv16).data(), 24);
    for (std::size_t size = 0; size < 1000; ++size) {
        const std::size_t blocks = size / 16 + 1, textSize = (16 * blocks + 2) / 3 * 4;
        GuardedBuffer plain(size), written(textSize + CipherKernels::slack), text(textSize),
            out(16 * blocks + CipherKernels::slack);
        std::memset(plain.text(), 'x', size);
        GetParam()->encryptToBase64(key, bytePointer(iv16), plain.bytes(), size, written.text());
        std::memcpy(text.text(), written.text(), textSize);
        ASSERT_EQ(GetParam()->decryptFromBase64(key, iv.text(), text.text(), out.bytes(), blocks),
                  DecryptedText::ascii);
        ASSERT_EQ(std::memcmp(out.text(), plain.text(), size), 0) << size;
    }
}

}  // namespace
}  // namespace torvel
