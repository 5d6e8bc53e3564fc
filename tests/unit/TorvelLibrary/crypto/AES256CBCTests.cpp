#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelLibrary/crypto/Random.h"
#include "unit/TorvelLibrary/crypto/Reference.h"

#include <cctype>
#include <cstdio>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using reference::base64;
using reference::encrypt;

const std::string password = "0123456789abcdef";
const std::string iv = "fedcba9876543210";
const std::string decryptingLine = "an error occured while decrypting\n";

struct Said {
    std::optional<std::string> result;
    std::string output;
};

Said listen(const std::function<std::optional<std::string>()>& call) {
    testing::internal::CaptureStdout();
    auto result = call();
    return {std::move(result), testing::internal::GetCapturedStdout()};
}

std::string shell(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    pclose(pipe);
    return output;
}

std::string hex(std::string_view bytes) {
    std::string text;
    char pair[3];
    for (const char byte : bytes) {
        std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(byte));
        text += pair;
    }
    return text;
}

TEST(EncryptString, IsReadByTheCommandLineTool) {
    const std::string text = "{\"amount\":1200,\"to\":\"09-771 234\"}";
    const auto cipher = AES256CBC::encryptString(text, password);
    ASSERT_TRUE(cipher);
    EXPECT_EQ(shell("printf %s '" + cipher->substr(16) + "' | openssl enc -d -aes-128-cbc -a -A -K " +
                    hex(password) + " -iv " + hex(cipher->substr(0, 16))),
              text);
}

TEST(DecryptString, ReadsTheCommandLineTool) {
    const std::string text = "balance: 1 200";
    const std::string data = shell("printf %s '" + text + "' | openssl enc -aes-128-cbc -a -A -K " +
                                   hex(password) + " -iv " + hex(iv));
    EXPECT_EQ(AES256CBC::decryptString(base64(iv) + data, password), text);
}

TEST(EncryptString, MakesIVTextAndBase64) {
    struct Row {
        const char* name;
        std::string text, password;
        std::size_t keySize;
    };
    const Row rows[] = {
        {"a whole block gains one", "sixteen bytes ..", password, 16},
        {"one character", "x", password, 16},
        {"password of 24 bytes", "text", "ööööööööabcdefgh", 24},
        {"password of 32 bytes", "text", "öööööööööööööööö", 32},
        {"CR LF is one character", "text", "\r\nöööööööabcdefgh", 24},
    };
    for (const Row& row : rows) {
        ASSERT_EQ(row.password.size(), row.keySize) << row.name;
        const auto cipher = AES256CBC::encryptString(row.text, row.password);
        ASSERT_TRUE(cipher) << row.name;
        const std::string ivText = cipher->substr(0, 16);
        for (const char c : ivText) EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c))) << row.name;
        EXPECT_EQ(cipher->substr(16), base64(encrypt(row.password, ivText, row.text))) << row.name;
        EXPECT_EQ(AES256CBC::decryptString(base64(ivText) + cipher->substr(16), row.password), row.text)
            << row.name;
    }
    EXPECT_NE(AES256CBC::encryptString("x", password), AES256CBC::encryptString("x", password));
}

TEST(EncryptString, IsAbsentInSilence) {
    struct Row {
        const char* name;
        std::string text, password;
    };
    const Row rows[] = {
        {"no text", "", password},
        {"no text, bad password", "", "short"},
        {"password of 15", "x", "0123456789abcde"},
        {"password of 17", "x", "0123456789abcdefg"},
        {"16 bytes, 15 characters", "x", "0123456789abcdö"},
        {"16 code points, 15 characters", "x", "0123456789abcde\xCC\x81"},
    };
    for (const Row& row : rows) {
        const Said said = listen([&] { return AES256CBC::encryptString(row.text, row.password); });
        EXPECT_EQ(said.output, "") << row.name;
        EXPECT_FALSE(said.result) << row.name;
    }
}

TEST(DecryptString, GivesTextOrNothing) {
    const std::string prefix = base64(iv);
    const std::string notUTF8 = base64(encrypt(password, iv, "caf\xE9"));
    const std::string good = base64(encrypt(password, iv, "text"));
    struct Row {
        const char* name;
        std::string str, password;
        std::optional<std::string> result;
        std::string output;
    };
    const Row rows[] = {
        {"text", prefix + good, password, "text", ""},
        {"empty", prefix + base64(encrypt(password, iv, "")), password, "", ""},
        {"16 characters", "AAAAAAAAAAAAAAAA", password, std::nullopt, ""},
        {"17 bytes, 16 characters", "AAAAAAAAAAAAAA\r\nA", password, std::nullopt, ""},
        {"password of 15", prefix + good, "0123456789abcde", std::nullopt, ""},
        {"not UTF-8", prefix + notUTF8, password, std::nullopt, decryptingLine},
        {"IV not base64", std::string("!").append(prefix, 1) + good, password, std::nullopt, decryptingLine},
        {"24 characters of IV are more bytes", std::string("ö").append(prefix, 1) + good, password,
         std::nullopt, decryptingLine},
        {"not whole blocks", prefix + "AAAA", password, std::nullopt, decryptingLine},
        // 64 bytes that decrypt to ASCII, if the prefix before their last "=" stays: without it, 47 bytes.
        {"the prefix before the last =",
         "hOYYkvTukD0CMD3DdFu5o+g="
         "rakD+hSfLe5ozhGRc9YsT84Jh+9UHKzRCkh3QWbfkQ5cEf7RZ7FFbcPYFAuWESihOYYkvTukD0CMD3DdFu5o+g==",
         password, std::nullopt, decryptingLine},
        {"what encryptString makes", AES256CBC::encryptString("sixteen bytes ..", password).value(), password,
         std::nullopt, decryptingLine},
    };
    for (const Row& row : rows) {
        const Said said = listen([&] { return AES256CBC::decryptString(row.str, row.password); });
        EXPECT_EQ(said.result, row.result) << row.name;
        EXPECT_EQ(said.output, row.output) << row.name;
    }
}

TEST(DecryptString, RemovesEveryOccurrenceOfThePrefix) {
    const std::string text =
        reference::base64(reference::bytes(600, 5));  // longer than the fast loops' groups
    struct Row {
        const char* name;
        std::string iv;  // 16, 17 or 18 bytes: only the first 16 count
    };
    const Row rows[] = {
        {"==", iv}, {"=", iv + "x"}, {"no padding", iv + "xy"}, {"repeats itself", std::string(18, 0)}};
    for (const Row& row : rows) {
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
    struct Row {
        const char* name;
        std::function<void()> call;
        const char* message;
    };
    const Row rows[] = {
        {"encrypting with 17 bytes", [&] { AES256CBC::encryptString("x", key17); },
         "16, 24 or 32 bytes, not 17"},
        {"decrypting with 17 bytes", [&] { AES256CBC::decryptString(prefix + good, key17); }, "not 17"},
        {"not base64", [&] { AES256CBC::decryptString(prefix + "A" + good, password); }, "not base64"},
        {"a character outside", [&] { AES256CBC::decryptString(prefix + "-" + good.substr(1), password); },
         "not base64"},
        {"17 characters", [&] { AES256CBC::decryptString("AAAAAAAAAAAAAAAAA", password); },
         "no bytes to decrypt"},
        {"24 characters", [&] { AES256CBC::decryptString(prefix, password); }, "no bytes to decrypt"},
        {"nothing but prefixes", [&] { AES256CBC::decryptString(prefix + prefix, password); },
         "no bytes to decrypt"},
        {"padding of no bytes", [] { PKCS7::remove(""); }, "no bytes to remove"},
        {"bound below 0", [] { Random::generate(-1); }, "no upper bound of -1"},
        {"bound beyond 32 bits", [] { Random::generate(4294967296); }, "no upper bound of 4294967296"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_DEATH(row.call(), row.message);
    }
}

TEST(AES256CBC, ServesSeveralThreads) {
    const std::string text = reference::base64(reference::bytes(300, 6));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                const std::string cipher = AES256CBC::encryptString(text, password).value();
                EXPECT_EQ(
                    AES256CBC::decryptString(base64(cipher.substr(0, 16)) + cipher.substr(16), password),
                    text);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace torvel
