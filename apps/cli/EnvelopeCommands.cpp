#include "TorvelLibrary/Data/Remote/Interceptors/EnvelopeNames.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "TorvelPlatform/foundation/Text.h"
#include "cli/Command.h"
#include "cli/HostFiles.h"
#include "cli/Output.h"

namespace torvel::cli {
namespace {

constexpr Option keyOption{"--key", "TEXT", "the symmetric key: 16 characters", Occurs::once, checkCipherKey};
constexpr Option flavourOption{"--flavour", "NAME", "whose member names the envelope has (VelmMoney)",
                               Occurs::atMostOnce, checkFlavour};
constexpr Option sealOptions[] = {
    {"--cert", "FILE.der", "the certificate whose key seals the symmetric key", Occurs::once},
    keyOption,
    flavourOption,
};
constexpr Option openOptions[] = {keyOption, flavourOption};

int seal(const Arguments& arguments) {
    const std::filesystem::path file = arguments.text("--cert", "");
    if (file.extension() != ".der") return arguments.misused("--cert: the file's name does not end in .der");
    if (const auto fault = encryptionCertificateFault(file)) return arguments.failed("--cert: " + *fault);
    auto plain = readInput("-");
    if (!plain) return arguments.failed(plain.error().localizedDescription);
    if (plain.value().empty()) return arguments.failed("there is no text to seal on standard input");
    if (!plain.value().utf8Text()) return arguments.failed("the text to seal is not UTF-8");

    Bundle::setMain(file.has_parent_path() ? file.parent_path() : ".");
    TorvelLibraryBuilder().setEncryptionCertName(file.stem()).setWrapperConfig(arguments.flavour()).build();
    URLRequest request(URL::file("/"));  // never sent: only its body counts
    request.httpBody = std::move(plain).value();
    const URLRequest sealed = EncryptRequestInterceptor(arguments.text("--key", "")).wrapRequest(request);
    return deliver(sealed.httpBody->raw() + "\n");
}

// Why the library's interceptor would pass an envelope unopened, or stop; absent when it can try.
std::optional<std::string> envelopeFault(const Data& envelope, WrapperConfig flavour) {
    const auto json = JSON::parse(envelope.raw());
    if (!json) return "the envelope is not JSON: " + json.error().description;
    if (!json.value().isObject()) return "the envelope is JSON, but no object";
    const EnvelopeNames names = envelopeNames(flavour);
    std::string_view texts[2];
    for (const auto& [name, text] :
         {std::pair(names.responseData, &texts[0]), {names.responseIv, &texts[1]}}) {
        const auto member = json.value().member(name);
        if (!member) return "the envelope has no member " + std::string(name);
        if (!member->string()) return "the member " + std::string(name) + " is not a string";
        *text = *member->string();
    }
    const auto& [data, iv] = texts;
    const auto ivBytes = Base64::decode(iv);
    if (!ivBytes || ivBytes->size() != 16)
        return "the member " + std::string(names.responseIv) + " is not the base64 of 16 bytes";
    // What the library decodes: it takes every occurrence of the IV's text out of the data.
    const auto dataBytes = Base64::decode(removingOccurrences(data, iv));
    if (!dataBytes) return "the member " + std::string(names.responseData) + " is not base64";
    if (dataBytes->empty() || dataBytes->size() % 16 != 0)
        return "the member " + std::string(names.responseData) + " is " + std::to_string(dataBytes->size()) +
               " bytes, not whole blocks of 16";
    return std::nullopt;
}

int open(const Arguments& arguments) {
    const auto envelope = readInput("-");
    if (!envelope) return arguments.failed(envelope.error().localizedDescription);
    const WrapperConfig flavour = arguments.flavour();
    if (const auto fault = envelopeFault(envelope.value(), flavour)) return arguments.failed(*fault);

    // Opening needs no certificate, but the library opens nothing before one has been named.
    TorvelLibraryBuilder().setEncryptionCertName("none").setWrapperConfig(flavour).build();
    const Data plain =
        DecryptResponseInterceptor(arguments.text("--key", "")).parseResponse(envelope.value());
    if (plain == envelope.value())  // the library passes unchanged what it cannot decrypt
        return arguments.failed("the envelope does not open with this key: no UTF-8 text comes out");
    return deliver(plain.raw());
}

}  // namespace

const Command sealCommand = {
    "seal",
    "plain text on standard input, the request envelope on standard output",
    "For whoever writes the server's side: opens with the private key of the certificate. For instance:\n\n"
    "  echo '{\"to\":\"0700000002\"}' | torvel seal --cert server.der --key 0123456789abcdef",
    sealOptions,
    seal,
};

const Command openCommand = {
    "open",
    "a response envelope on standard input, the plain text on standard output",
    "For whoever writes the server's side: what the library makes of an answer. Exits with 1 and a\n"
    "reason when the envelope does not open. For instance:\n\n"
    "  torvel open --key 0123456789abcdef <answer.json",
    openOptions,
    open,
};

}  // namespace torvel::cli
