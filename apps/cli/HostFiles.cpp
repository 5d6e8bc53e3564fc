#include "cli/HostFiles.h"

#include "TorvelPlatform/security/SecCertificate.h"

#include <iostream>

namespace torvel::cli {
namespace {

Outcome<SecCertificate, std::string> readCertificate(const std::filesystem::path& file) {
    const auto bytes = readFile(file);
    if (!bytes) return bytes.error().localizedDescription;
    auto certificate = SecCertificate::createWithData(bytes.value());
    if (!certificate) return file.string() + " is not one certificate in DER";
    return std::move(*certificate);
}

}  // namespace

Outcome<Data, FileError> readInput(const std::string& argument) {
    if (argument == "-") return Data(std::string(std::istreambuf_iterator<char>(std::cin), {}));
    if (argument.starts_with('@')) return readFile(argument.substr(1));
    return Data(argument);
}

std::optional<std::string> certificateFault(const std::filesystem::path& derFile) {
    const auto certificate = readCertificate(derFile);
    return certificate ? std::nullopt : std::optional(certificate.error());
}

std::optional<std::string> encryptionCertificateFault(const std::filesystem::path& derFile) {
    const auto certificate = readCertificate(derFile);
    if (!certificate) return certificate.error();
    constexpr std::size_t paddingOverhead = 11;  // RFC 8017, 7.2
    const auto key = certificate.value().copyKey();
    if (key && key->blockSize() > paddingOverhead) return std::nullopt;
    return derFile.string() + " has no RSA key";
}

}  // namespace torvel::cli
