#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelLibrary/crypto/Random.h"
#include "unit/TorvelLibrary/crypto/Reference.h"

#include <cctype>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using reference::base64;
using reference::encrypt;

const std::string password = "0123456789abcdef";
const std::string iv = "fedcba9876543210";

TEST(EncryptString, MakesIVTextAndBase64) {
    const struct {
        std::string text, password;
        std::size_t keySize;
    } rows[] = {
        {"sixteen bytes ..", password, 16},  // a whole block gains one
        {"{\"amount\":1200}", password, 16},  {"24 bytes", "ööööööööabcdefgh", 24},
        {"32 bytes", "öööööööööööööööö", 32}, {"CR LF is one character", "\r\nöööööööabcdefgh", 24},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ASSERT_EQ(row.password.size(), row.keySize);
        const auto cipher = AES256CBC::encryptString(row.text, row.password);
        ASSERT_TRUE(cipher);
        const std::string ivText = cipher->substr(0, 16);
        for (const char c : ivText) EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c)));
        EXPECT_EQ(cipher->substr(16), base64(encrypt(row.password, ivText, row.text)));
        EXPECT_EQ(AES256CBC::decryptString(base64(ivText) + cipher->substr(16), row.password), row.text);
    }
    EXPECT_NE(AES256CBC::encryptString("x", password), AES256CBC::encryptString("x", password));
}

TEST(EncryptString, IsAbsentInSilence) {
    const std::pair<const char*, std::string> rows[] = {
        {"", password},
        {"", "short"},
        {"x", "0123456789abcde"},
        {"x", "0123456789abcdefg"},
        {"x", "0123456789abcdö"},          // 16 bytes, 15 characters
        {"x", "0123456789abcde\xCC\x81"},  // 16 code points, 15 characters
    };
    for (const auto& [text, key] : rows) {
        testing::internal::CaptureStdout();
        EXPECT_FALSE(AES256CBC::encryptString(text, key)) << key;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << key;
    }
}

TEST(DecryptString, GivesTextOrNothing) {
    const std::string prefix = base64(iv), broken = prefix.substr(1);
    const std::string good = base64(encrypt(password, iv, "text"));
    const struct {
        const char* name;
        std::string text;
        std::optional<std::string> result;
        bool saysSo;
    } rows[] = {
        {"text", prefix + good, "text", false},
        {"empty", prefix + base64(encrypt(password, iv, "")), "", false},
        {"16 characters", "AAAAAAAAAAAAAAAA", {}, false},
        {"17 bytes, 16 characters", "AAAAAAAAAAAAAA\r\nA", {}, false},
        {"not UTF-8", prefix + base64(encrypt(password, iv, "caf\xE9")), {}, true},
        {"IV not base64", "!" + broken + good, {}, true},
        {"24 characters of IV are more bytes", "ö" + broken + good, {}, true},
        {"not whole blocks", prefix + "AAAA", {}, true},
        // 64 bytes that decrypt to ASCII, if the prefix before their last "=" stays: without it, 47 bytes.
        {"the prefix before the last =",
         "hOYYkvTukD0CMD3DdFu5o+g="
         "rakD+hSfLe5ozhGRc9YsT84Jh+9UHKzRCkh3QWbfkQ5cEf7RZ7FFbcPYFAuWESihOYYkvTukD0CMD3DdFu5o+g==",
         std::nullopt, true},
        {"what encryptString makes", AES256CBC::encryptString("sixteen bytes ..", password).value(),
         std::nullopt, true},
    };
    for (const auto& row : rows) {
        const char* const said = row.saysSo ? "an error occured while decrypting\n" : "";
        testing::internal::CaptureStdout();
        EXPECT_EQ(AES256CBC::decryptString(row.text, password), row.result) << row.name;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), said) << row.name;
    }
    EXPECT_EQ(AES256CBC::decryptString(prefix + good, "0123456789abcde"), std::nullopt);
}

TEST(DecryptString, RemovesEveryOccurrenceOfThePrefix) {
    const std::string text =
        reference::base64(reference::bytes(600, 5));  // longer than the fast loops' groups
    const struct {
        const char* name;
        std::string iv;  // 16, 17 or 18 bytes: only the first 16 count
    } rows[] = {
        {"==", iv}, {"=", iv + "x"}, {"no padding", iv + "xy"}, {"repeats itself", std::string(18, 0)}};
    for (const auto& row : rows) {
        const std::string prefix = base64(row.iv), data = base64(encrypt(password, row.iv, text));
        const std::string texts[] = {
            prefix + data,
            prefix + data + prefix,
            prefix + prefix + prefix + data,
            prefix + data + prefix + prefix,
            prefix + data.substr(0, 128) + prefix + data.substr(128),
            prefix + data.substr(0, 3) + prefix + data.substr(3, 50) + prefix + data.substr(53) + prefix,
        };
        for (const std::string& planted : texts)
            EXPECT_EQ(AES256CBC::decryptString(planted, password), text) << row.name << " " << planted;
    }
    // What removal joins together is not looked at again.
    const std::string prefix = base64(iv), data = base64(encrypt(password, iv, text));
    EXPECT_DEATH(
        AES256CBC::decryptString(prefix + prefix.substr(0, 12) + prefix + prefix.substr(12) + data, password),
        "not base64");
}

TEST(CryptoDeathTest, DeploymentFaultsStopTheProcess) {
    const std::string prefix = base64(iv), good = base64(encrypt(password, iv, "text"));
    const std::string key17 = "0123456789abcdeö";  // 16 characters
    EXPECT_DEATH(AES256CBC::encryptString("x", key17), "16, 24 or 32 bytes, not 17");
    EXPECT_DEATH(AES256CBC::decryptString(prefix + good, key17), "not 17");
    EXPECT_DEATH(AES256CBC::decryptString(prefix + "A" + good, password), "not base64");
    EXPECT_DEATH(AES256CBC::decryptString(prefix + "-" + good.substr(1), password), "not base64");
    for (const std::string& text : {std::string(17, 'A'), prefix, prefix + prefix})
        EXPECT_DEATH(AES256CBC::decryptString(text, password), "no bytes to decrypt") << text;
    EXPECT_DEATH(PKCS7::remove(""), "no bytes to remove");
    for (const std::int64_t bound : {std::int64_t{-1}, std::int64_t{4294967296}})
        EXPECT_DEATH(Random::generate(bound), "no upper bound of " + std::to_string(bound));
}

}  // namespace
}  // namespace torvel
