#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/RequestLog.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/security/SecKey.h"
#include "cli/Command.h"
#include "cli/HarRecorder.h"
#include "cli/HostFiles.h"
#include "cli/Output.h"

#include <algorithm>
#include <iostream>

#include <nlohmann/json.hpp>

namespace torvel::cli {
namespace {

bool hasControls(std::string_view text) {
    return std::ranges::any_of(text, [](char c) { return (c >= 0 && c < ' ') || c == 127; });
}

std::optional<std::string> checkMethod(std::string_view value) {
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || c == '-'; };
    if (!value.empty() && std::ranges::all_of(value, isLetter)) return std::nullopt;
    return "is not an HTTP method, in capitals";
}

std::optional<std::string> checkServer(std::string_view value) {
    const auto url = URL::parse(value);
    const std::string scheme = url ? url->scheme().value_or("") : "";
    if ((scheme == "http" || scheme == "https") && url->host()) return std::nullopt;
    return "is not an http or https URL";
}

std::optional<std::string> checkHeader(std::string_view value) {
    const std::size_t colon = value.find(':');
    const std::string_view name = value.substr(0, colon);
    if (colon != std::string_view::npos && !name.empty() && name.find(' ') == name.npos &&
        !hasControls(value))
        return std::nullopt;
    return "is not NAME:VALUE";
}

std::optional<std::string> checkType(std::string_view value) {
    if (value.find('/') != value.npos && !hasControls(value)) return std::nullopt;
    return "is not a content type";
}

constexpr Option options[] = {
    {"TARGET", "", "a URL, a name in the host's endpoint table, or a path below --server", Occurs::once},
    {"-X", "METHOD", "the HTTP method; GET by default, POST with --data or --upload", Occurs::atMostOnce,
     checkMethod},
    {"--server", "URL", "the base of targets that are no URL", Occurs::atMostOnce, checkServer},
    {"--bundle", "DIR", "the host's resources: EndpointsConfig.plist and certificates NAME.der"},
    {"--data", "TEXT|@FILE|-", "the body: the text itself, a file, or standard input"},
    {"--type", "MIME", "the body's content type (application/json)", Occurs::atMostOnce, checkType},
    {"--header", "NAME:VALUE", "a header field; may be repeated", Occurs::anyTimes, checkHeader},
    {"--upload", "FILE", "sends the file as a multipart form, with a progress bar on a terminal"},
    {"--encrypt", "", "seals the request and opens the answer; needs --key and --cert"},
    {"--key", "TEXT", "the symmetric key: 16 characters", Occurs::atMostOnce, checkCipherKey},
    {"--cert", "NAME", "the encryption certificate, NAME.der in the bundle"},
    {"--flavour", "NAME", "whose member names the envelope has (VelmMoney)", Occurs::atMostOnce,
     checkFlavour},
    {"--pin-cert", "NAME", "trusts the server only with the certificate NAME.der of the bundle"},
    {"--pin-key", "FILE", "trusts the server only with this public key, PEM"},
    {"--bypass", "", "trusts any server"},
    {"--timeout", "S", "seconds without a byte moving before the request fails (30)", Occurs::atMostOnce,
     checkSeconds},
    {"--log", "", "the library's log, on standard error, with a line on the request's course"},
    {"--har", "FILE", "records the request as an HTTP archive for browsers, without secrets"},
};

// What a host would add to each of its requests.
class HeaderInterceptor final : public RequestWrapper {
  public:
    explicit HeaderInterceptor(std::vector<std::string> fields) : m_fields(std::move(fields)) {}

    URLRequest wrapRequest(URLRequest& request) override {
        for (const std::string& field : m_fields) {
            const std::size_t colon = field.find(':');
            const std::size_t value = std::min(field.find_first_not_of(' ', colon + 1), field.size());
            request.headers.set(field.substr(0, colon), field.substr(value));
        }
        return request;
    }

  private:
    std::vector<std::string> m_fields;
};

// Options that make no sense together, or only together.
std::optional<std::string> combinationFault(const Arguments& arguments) {
    const auto given = [&](const char* name) { return arguments.has(name); };
    constexpr std::pair<const char*, const char*> needed[] = {
        {"--encrypt", "--key"}, {"--encrypt", "--cert"}, {"--key", "--encrypt"}, {"--cert", "--encrypt"}};
    for (const auto& [option, other] : needed) {
        if (given(option) && !given(other)) return std::string(option) + " needs " + other;
    }
    constexpr std::pair<const char*, const char*> exclusive[] = {{"--data", "--upload"},
                                                                 {"--pin-cert", "--pin-key"},
                                                                 {"--bypass", "--pin-cert"},
                                                                 {"--bypass", "--pin-key"}};
    for (const auto& [one, other] : exclusive) {
        if (given(one) && given(other)) return std::string(one) + " and " + other + " exclude each other";
    }
    return std::nullopt;
}

// A certificate that the library will look for in the bundle.
using FileFault = std::optional<std::string>(const std::filesystem::path& file);
std::optional<std::string> bundleFault(const Arguments& arguments, const char* option, FileFault* faultOf) {
    const auto name = arguments.text(option);
    if (!name) return std::nullopt;
    const auto file = Bundle::main().path(*name, "der");
    if (!file)
        return std::string(option) + ": there is no " + *name + ".der in " +
               Bundle::main().directory().string();
    const auto fault = faultOf(*file);
    return fault ? std::optional(std::string(option) + ": " + *fault) : std::nullopt;
}

// What the request takes from files. Absent where the option is.
struct Inputs {
    std::optional<Data> body, upload, pinnedKey;
};

// Reads one of them; the fault is one line.
std::optional<std::string> readOption(const Arguments& arguments, const char* option,
                                      std::optional<Data>& input) {
    const auto given = arguments.text(option);
    if (!given) return std::nullopt;
    auto bytes = std::string_view(option) == "--data" ? readInput(*given) : readFile(*given);
    if (!bytes) return std::string(option) + ": " + bytes.error().localizedDescription;
    input = std::move(bytes).value();
    return std::nullopt;
}

Outcome<Inputs, std::string> readInputs(const Arguments& arguments) {
    Inputs inputs;
    for (const auto& fault :
         {readOption(arguments, "--data", inputs.body), readOption(arguments, "--upload", inputs.upload),
          readOption(arguments, "--pin-key", inputs.pinnedKey),
          bundleFault(arguments, "--pin-cert", certificateFault),
          bundleFault(arguments, "--cert", encryptionCertificateFault)}) {
        if (fault) return *fault;
    }
    if (inputs.pinnedKey && !SecKey::createWithData(*inputs.pinnedKey))
        return "--pin-key: " + *arguments.text("--pin-key") + " is not a public key in PEM";
    if (arguments.has("--encrypt") && inputs.body && (inputs.body->empty() || !inputs.body->utf8Text()))
        return std::string("--data: only UTF-8 text that is not empty can be encrypted");
    return inputs;
}

void configure(const Arguments& arguments, const Inputs& inputs, std::string_view target) {
    TorvelLibraryBuilder builder;
    // The library joins base and target as they stand.
    std::string base = arguments.text("--server", "");
    if (!base.ends_with('/') && !target.starts_with('/')) base += '/';
    builder.setServerURL(std::move(base))
        .setRequestTimeoutInterval(arguments.number("--timeout", builder.requestTimeoutInterval))
        .setWrapperConfig(arguments.flavour())
        .setIsHttpsByPassRequired(arguments.has("--bypass"));
    if (const auto name = arguments.text("--cert")) builder.setEncryptionCertName(*name);
    if (const auto name = arguments.text("--pin-cert"))
        builder.setSSlType(SSlPinningType::certificate({*name}));
    if (inputs.pinnedKey) builder.setSSlType(SSlPinningType::publicKey({inputs.pinnedKey->raw()}));
    builder.build();
}

struct Interceptors {
    RequestInterceptors request;
    ResponseInterceptors response;
};

Interceptors interceptors(const Arguments& arguments) {
    Interceptors chosen;
    if (arguments.has("--header"))
        chosen.request.push_back(std::make_shared<HeaderInterceptor>(arguments.all("--header")));
    if (arguments.has("--encrypt")) {
        const std::string key = arguments.text("--key", "");
        chosen.request.push_back(std::make_shared<EncryptRequestInterceptor>(key));
        chosen.response.push_back(std::make_shared<DecryptResponseInterceptor>(key));
    }
    return chosen;
}

// How the request ended: the exit code, absent until it did.
struct Ending {
    std::optional<int> exit;

    void succeed(const Data& body) { exit = deliver(body.raw()); }

    void fail(const Decodable& error) {
        const auto& record = dynamic_cast<const APITimeError&>(error);
        nlohmann::ordered_json line{{"message", record.localizedDescription()},
                                    {"errorCode", record.errorCodeInResponse()}};
        if (record.receivedDataInResponse()) line["body"] = record.receivedDataInResponse()->raw();
        std::cerr << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
        exit = exitFailed;
    }
};

void upload(const Arguments& arguments, const std::string& target, Data file, Ending& ending) {
    const auto [wrappers, parsers] = interceptors(arguments);
    const auto name = std::filesystem::path(*arguments.text("--upload")).filename().string();
    TorvelNetworkClient().multipartRequest(
        target, arguments.text("-X", "POST"), std::move(file), arguments.text("--type", "application/json"),
        name, wrappers, parsers, [&](Data body) { ending.succeed(body); },
        [&](const Decodable& error) { ending.fail(error); },
        [bar = std::make_shared<Progress>()](double sent) { bar->show(sent); });
}

RequestHandle send(const Arguments& arguments, const std::string& target, std::optional<Data> body,
                   Ending& ending) {
    const TorvelNetworkClient client;
    const auto [wrappers, parsers] = interceptors(arguments);
    const std::string type = arguments.text("--type", "application/json");
    const std::string method = arguments.text("-X", body ? "POST" : "GET");
    const OnSuccess onSuccess = [&](Data answer) { ending.succeed(answer); };
    const OnError onError = [&](const Decodable& error) { ending.fail(error); };

    constexpr std::pair<const char*, decltype(&NetworkDispatcher::postRequest)> withBody[] = {
        {"POST", &NetworkDispatcher::postRequest},
        {"PUT", &NetworkDispatcher::putRequest},
        {"DELETE", &NetworkDispatcher::deleteRequest}};
    for (const auto& [name, operation] : withBody) {
        if (body && method == name)
            return (client.*operation)(target, *body, type, wrappers, parsers, onSuccess, onError);
    }
    if (!body && method == "GET")
        return client.getRequest(target, type, wrappers, parsers, onSuccess, onError);
    // Any other method, as a host sends it that builds its own requests.
    auto request = client.getRequest(target);
    if (!request) {
        onError(APITimeError("Unexpected Error", "-1", std::nullopt));
        return {};
    }
    request->httpMethod = method;
    request->httpBody = std::move(body);
    return client.consumeRequest(*request, type, wrappers, parsers, onSuccess, onError);
}

int call(const Arguments& arguments) {
    if (const auto fault = combinationFault(arguments)) return arguments.misused(*fault);
    LogUtils::setLoggingEnabled(arguments.has("--log"));
    if (const auto directory = arguments.text("--bundle")) {
        if (!Bundle::at(*directory)) return arguments.failed("--bundle: there is no directory " + *directory);
        Bundle::setMain(*directory);
    }
    const std::string target = EndpointsHelper::getEndPoint<std::string>(arguments.text("TARGET", ""));
    if (!target.starts_with("http") && !arguments.has("--server"))
        return arguments.misused("the target is no URL, so --server is needed");
    auto inputs = readInputs(arguments);
    if (!inputs) return arguments.failed(inputs.error());

    configure(arguments, inputs.value(), target);
    const auto recorder = std::make_shared<HarRecorder>();
    auto& monitors = TorvelLibrary::sharedInstance()->eventMonitors;
    if (arguments.has("--har")) monitors.push_back(recorder);
    if (arguments.has("--log")) monitors.push_back(std::make_shared<RequestLog>());
    Ending ending;
    if (inputs.value().upload)
        upload(arguments, target, std::move(*inputs.value().upload), ending);
    else
        send(arguments, target, std::move(inputs.value().body), ending);
    // The library's own time-out ends the request; an upload or an answer that moves may take its time.
    constexpr std::chrono::hours aWhile{1};
    while (!ending.exit) DispatchQueue::main().runUntil([&] { return ending.exit.has_value(); }, aWhile);
    if (const auto file = arguments.text("--har"))
        if (const auto fault = recorder->write(*file)) return arguments.failed("--har: " + *fault);
    return *ending.exit;
}

}  // namespace

const Command callCommand = {
    "call",
    "one request through the library, pinned and encrypted as asked",
    "The body goes to standard output (exit code 0) when the library calls onSuccess, the error record to\n"
    "standard error (exit code 1) when it calls onError. SSL_CERT_FILE names an authority of your own.\n"
    "For instance, against torvel serve --dir DIR:\n\n"
    "  SSL_CERT_FILE=DIR/ca.pem torvel call /echo --server https://127.0.0.1:PORT --bundle DIR \\\n"
    "      --data '{\"amount\":\"12.50\"}' --pin-cert server --encrypt --key 0123456789abcdef --cert server",
    options,
    call,
};

}  // namespace torvel::cli
