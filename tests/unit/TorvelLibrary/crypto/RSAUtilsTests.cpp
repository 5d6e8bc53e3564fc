#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/crypto/PEMUtils.h"
#include "TorvelLibrary/crypto/RSAUtils.h"
#include "TorvelTesting/Certificates.h"
#include "TorvelTesting/HostFixture.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

SecKey keyOf(const testing::Identity& identity) {
    return *SecCertificate::createWithData(identity.der)->copyKey();
}

TEST(RSAUtils, OneBlockAPieceOpensWithThePrivateKey) {
    constexpr std::size_t overhead = 11;  // of PKCS #1 v1.5 in a block (RFC 8017, 7.2.1)
    for (const int bits : {1024, 2048, 3072, 4096}) {
        const testing::Identity identity = testing::issue({.rsaBits = bits});
        const std::size_t block = static_cast<std::size_t>(bits) / 8, room = block - overhead;
        for (const std::size_t size :
             {std::size_t{0}, std::size_t{1}, room - 1, room, room + 1, 2 * room, 2 * room + 1}) {
            SCOPED_TRACE(std::to_string(bits) + " bits, " + std::to_string(size) + " bytes");
            std::string plain(size, '\0');
            for (std::size_t i = 0; i < size; ++i) plain[i] = static_cast<char>(i * 7);
            const auto cipher = RSAUtils::encryptWithRSAKey(Data(plain), keyOf(identity), SecPadding::PKCS1);
            ASSERT_TRUE(cipher.has_value());
            ASSERT_EQ(cipher->size(), (size + room - 1) / room * block);
            std::string opened;
            for (std::size_t at = 0; at < cipher->size(); at += block)
                opened += testing::rsaDecrypted(identity, std::string_view(cipher->raw()).substr(at, block));
            EXPECT_EQ(opened, plain);
        }
    }
}

TEST(RSAUtils, AnUnknownPaddingGivesNothingAndASystemLogLine) {
    ::testing::internal::CaptureStderr();
    const auto cipher =
        RSAUtils::encryptWithRSAKey(Data("x"), keyOf(testing::issue({.rsaBits = 2048})), SecPadding::none);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                ::testing::MatchesRegex("Error while ecrypting: -[0-9]+\n"));
    EXPECT_FALSE(cipher.has_value());
}

TEST(RSAUtils, AKeyThatCannotEncryptStopsTheProcess) {
    const SecKey curve = keyOf(testing::issue({}));
    EXPECT_DEATH(RSAUtils::encryptWithRSAKey(Data("x"), curve, SecPadding::PKCS1), "too small");
}

TEST(SecKey, ReadsSubjectPublicKeyInfoOnly) {
    const testing::Identity identity = testing::issue({.rsaBits = 2048});
    const auto key = SecKey::createWithData(Data(identity.publicKeyPem));
    ASSERT_TRUE(key.has_value());
    EXPECT_EQ(*key, keyOf(identity));
    EXPECT_EQ(key->blockSize(), 256U);
    EXPECT_EQ(*SecKey::createWithData(key->subjectPublicKeyInfo()), *key);
    for (const std::string& text : {std::string(), std::string("x"), identity.certificatePem,
                                    identity.der.raw(), key->subjectPublicKeyInfo().raw() + "x"})
        EXPECT_FALSE(SecKey::createWithData(Data(text)).has_value());
    EXPECT_FALSE(SecCertificate::createWithData(Data(identity.der.raw() + "x")).has_value());
}

class PEM : public testing::HostFixture {};

TEST_F(PEM, TheKeyIsReadOnceItsFileIsThereAndThenKept) {
    TorvelLibraryBuilder().setEncryptionCertName("server").build();
    EXPECT_EQ(PEMUtils::getSecKey(), std::nullopt);
    const testing::Identity identity =
        testing::issue({.firstDay = -9, .lastDay = -3, .rsaBits = 2048});  // dates do not matter
    addResource("server.der", identity.der.raw());
    ASSERT_EQ(PEMUtils::getSecKey(), keyOf(identity));
    std::filesystem::remove(directory() / "server.der");
    TorvelLibraryBuilder().setEncryptionCertName("another").build();
    EXPECT_EQ(PEMUtils::getSecKey(), keyOf(identity));
}

TEST_F(PEM, AFileThatIsNoCertificateStopsTheProcess) {
    addResource("text.der", testing::issue({}).certificatePem);
    std::filesystem::create_directory(directory() / "folder.der");
    for (const char* name : {"text", "folder"}) {
        TorvelLibraryBuilder().setEncryptionCertName(name).build();
        EXPECT_DEATH(PEMUtils::getSecKey(), "Fatal error");
    }
}

}  // namespace
}  // namespace torvel
