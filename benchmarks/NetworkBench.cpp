#include "Bench.h"
#include "CipherPeer.h"
#include "NetworkClients.h"
#include "NetworkServers.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/File.h"

#include <memory>

#include <curl/curl.h>
#include <malloc.h>
#include <nlohmann/json.hpp>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <sys/resource.h>

namespace torvel::bench {
namespace {

const std::string password = "0123456789abcdef";
constexpr std::string_view mimeType = "application/json";

// A library that has sent nothing yet, pinned to the server's certificate: its session's thread will run
// where the calling thread does.
void configure(const std::string& server) {
    TorvelLibraryBuilder()
        .setServerURL(server)
        .setRequestTimeoutInterval(3600)
        .setEncryptionCertName("server")
        .setSSlType(SSlPinningType::certificate({"server"}))
        .build();
}

std::shared_ptr<Session> sessionOf(std::size_t connections) {
    URLSessionConfiguration configuration = URLSessionConfiguration::defaults();
    configuration.maximumConnectionsPerHost = connections;
    return std::make_shared<Session>(std::move(configuration));
}

void refused(const Decodable& error) {
    giveUp("torvel: " + static_cast<const APITimeError&>(error).localizedDescription());
}

// A protocol, how many requests are sent at a time, and what counts as time.
struct Case {
    const char* name;
    std::string url;
    std::size_t inFlight;
    Pace pace;
};

// While one request is in flight on one processor, somebody always works: the wall time on a machine with
// nothing else to do is what client and server take together.
template <class Server>
Pace together(const Server& server) {
    return {.rounds = 15, .turn = 0.06, .ownClock = [&server] {
                return seconds(Clock::process) + server.seconds();
            }};
}

struct Peer {
    const char* name;
    double bound;
    std::unique_ptr<Client> client;
};

void compare(Report& report, const Case& measured, std::vector<Peer> peers) {
    const Load load{.url = measured.url + "/", .inFlight = measured.inFlight};
    const auto sideOf = [&](Client& client) {
        return [&client, &load](std::size_t times) { client.get(load, times); };
    };
    configure(measured.url);
    const auto torvel = torvelClient();
    std::vector<Side> sides{sideOf(*torvel)};
    for (const Peer& peer : peers) sides.emplace_back(sideOf(*peer.client));
    for (const Side& side : sides)
        side(4 * load.inFlight);  // every connection is open before a turn is sized
    const Rounds rounds = takeTurns(sides, measured.pace);
    for (std::size_t i = 0; i < peers.size(); ++i) {
        const std::string name = std::string(measured.name) + "-over-" + peers[i].name;
        report.time(name, "torvel", rounds.time(0));
        report.time(name, peers[i].name, rounds.time(i + 1));
        report.atMost(name, rounds.ratio(0, i + 1), peers[i].bound);
    }
}

template <class... Ps>
std::vector<Peer> peers(Ps... each) {
    std::vector<Peer> list;
    (list.push_back(std::move(each)), ...);
    return list;
}

void compareClients(Report& report, const Nginx& nginx, const std::string& authority) {
    const auto curl = [&](double bound) { return Peer{"libcurl", bound, curlClient(authority)}; };
    const auto qt = [&](double bound) { return Peer{"qt", bound, qtClient(authority)}; };
    const auto httplib = [&](double bound) { return Peer{"cpp-httplib", bound, httplibClient(authority)}; };

    // One request at a time, client and server on one processor: a wake-up across would drown all else.
    runOnProcessor(0);
    compare(report, {"http-1", nginx.http(), 1, together(nginx)}, peers(curl(1.80), qt(0.25)));
    compare(report, {"tls-1", nginx.https(), 1, together(nginx)}, peers(curl(1.70), qt(0.45)));
    compare(report, {"h2-1", nginx.http2(), 1, together(nginx)}, peers(curl(1.60)));
    runOnProcessor(1);
    const Pace clientAlone{.clock = Clock::process, .rounds = 15, .turn = 0.06};
    compare(report, {"http-64", nginx.http(), 64, clientAlone}, peers(curl(1.35), qt(0.20), httplib(1.35)));
    compare(report, {"tls-64", nginx.https(), 64, clientAlone}, peers(curl(1.30), qt(0.40), httplib(1.10)));
    compare(report, {"h2-64", nginx.http2(), 64, clientAlone}, peers(curl(1.25)));
    runOnProcessor(0);
}

std::size_t heapInUse() {
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

// Bytes a request, with a thousand of them waiting for their answers.
double heapARequest(HoldingClient& client, const SinkServer& sink, const Load& warm) {
    constexpr int count = 1000;
    client.get(warm, 10);
    const int before = sink.hanging();
    const std::size_t heapBefore = heapInUse();
    client.hold({.url = sink.url() + "/hang", .connections = warm.connections}, count,
                [&] { return sink.hanging() == before + count; });
    return static_cast<double>(heapInUse() - heapBefore) / count;
}

void measureHanging(Report& report, const std::string& authority) {
    constexpr std::size_t enough = 2000;
    const SinkServer sink;
    const Load one{.url = sink.url() + "/", .connections = enough};
    configure(sink.url());
    const auto few = sessionOf(enough), many = sessionOf(enough);
    const auto use = [](const std::shared_ptr<Session>& session) {
        TorvelLibrary::sharedInstance()->setManager(session);
    };
    const auto client = torvelClient(), curl = curlClient(authority);

    use(many);
    const double ours = heapARequest(*client, sink, one);
    const double raw = heapARequest(*curl, sink, one);
    report.atMost("heap-in-flight-over-libcurl", ours / raw, 1.15);
    report.atMost("heap-in-flight-kilobytes", ours / 1000, 30);

    use(few);
    const int before = sink.hanging();
    client->hold({.url = sink.url() + "/hang"}, 10, [&] { return sink.hanging() == before + 10; });
    const auto sideOf = [&](const std::shared_ptr<Session>& session) {
        return [&, session](std::size_t times) {
            use(session);
            client->get(one, times);
        };
    };
    const Rounds rounds = takeTurns({sideOf(many), sideOf(few)}, together(sink));
    report.time("one-more-while-1000-hang-over-10", "1000", rounds.time(0));
    report.time("one-more-while-1000-hang-over-10", "10", rounds.time(1));
    report.atMost("one-more-while-1000-hang-over-10", rounds.ratio(0, 1), 1.5);
}

// The peer's form: the same field of the same bytes, kept in memory.
void uploadByCurl(CURL* easy, const std::string& url, const std::string& file) {
    curl_mime* const form = curl_mime_init(easy);
    curl_mimepart* const part = curl_mime_addpart(form);
    curl_mime_name(part, "file");
    curl_mime_filename(part, "scan.png");
    curl_mime_type(part, "image/png");
    curl_mime_data(part, file.data(), file.size());
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_MIMEPOST, form);
    curl_slist* const fields = curl_slist_append(nullptr, "Expect:");
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, fields);
    curl_easy_setopt(
        easy, CURLOPT_WRITEFUNCTION, +[](char*, std::size_t, std::size_t size, void*) { return size; });
    if (curl_easy_perform(easy) != CURLE_OK) giveUp("libcurl: an upload failed");
    curl_mime_free(form);
    curl_slist_free_all(fields);
}

void measureUpload(Report& report) {
    const SinkServer sink;
    const std::string file = "\x89PNG\r\n\x1a\n" + std::string(30'000'000, 'p'), url = sink.url() + "/";
    configure(sink.url());
    const TorvelNetworkClient client;
    const Side torvel = [&](std::size_t times) {
        sendInTurns(times, 1, [&](const std::function<void()>& done) {
            client.multipartRequest(
                url, "POST", Data(file), "image/png", "scan.png", {}, {}, [done](const Data&) { done(); },
                refused, [](double) {});
        });
    };
    const std::unique_ptr<CURL, void (*)(CURL*)> easy(curl_easy_init(), curl_easy_cleanup);
    const Side curl = repeating([&] { uploadByCurl(easy.get(), url, file); });
    const Rounds rounds = takeTurns({torvel, curl}, together(sink));
    report.time("upload-30MB-over-libcurl", "torvel", rounds.time(0));
    report.time("upload-30MB-over-libcurl", "libcurl", rounds.time(1));
    report.atMost("upload-30MB-over-libcurl", rounds.ratio(0, 1), 1.35);
}

// One encryption of a 16-byte key under the server's.
Side rsaOperation(const Folder& folder) {
    const std::string der = readFile(folder / "server.der").value().raw();
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
    const std::unique_ptr<X509, void (*)(X509*)> certificate(
        d2i_X509(nullptr, &bytes, static_cast<long>(der.size())), X509_free);
    const std::shared_ptr<EVP_PKEY_CTX> context(
        EVP_PKEY_CTX_new(X509_get0_pubkey(certificate.get()), nullptr), EVP_PKEY_CTX_free);
    if (EVP_PKEY_encrypt_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1)
        giveUp("OpenSSL: no encryption");
    return repeating([context] {
        unsigned char block[256];
        std::size_t size = sizeof block;
        if (EVP_PKEY_encrypt(context.get(), block, &size,
                             reinterpret_cast<const unsigned char*>(password.data()), password.size()) != 1)
            giveUp("OpenSSL: encryption failed");
        keep(block);
    });
}

void measureEncryptedPost(Report& report, const Folder& folder) {
    const SinkServer sink;
    const std::string url = sink.url() + "/", body(1024, 'b');
    configure(sink.url());
    const TorvelNetworkClient client;
    const Side rsa = rsaOperation(folder);
    const Side nothing = [](std::size_t) {};
    const auto sideOf = [&](const RequestInterceptors& interceptors, const Side& before) {
        return [&, interceptors, before](std::size_t times) {
            sendInTurns(times, 1, [&](const std::function<void()>& done) {
                before(1);
                client.postRequest(
                    url, Data(body), mimeType, interceptors, {}, [done](const Data&) { done(); }, refused);
            });
        };
    };
    const auto interceptor = std::make_shared<EncryptRequestInterceptor>(password);
    const Side encryption = repeating([&] {
        URLRequest request(URL::parse(url).value());
        request.httpBody = Data(body);
        keep(interceptor->wrapRequest(request));
    });
    // What the operation itself costs between posts, when the thread that sends falls asleep meanwhile.
    const Side plainAfterRSA = sideOf({}, rsa);
    const Rounds rounds =
        takeTurns({sideOf({interceptor}, nothing), sideOf({}, nothing), rsa, encryption, plainAfterRSA},
                  {.clock = Clock::process, .rounds = 25, .turn = 0.05});
    const std::string name = "encrypted-post-beyond-plain-over-rsa";
    report.time(name, "encrypted", rounds.time(0));
    report.time(name, "plain", rounds.time(1));
    report.time(name, "rsa", rounds.time(2));
    report.time(name, "encryption-alone", rounds.time(3));
    report.time(name, "rsa-then-plain", rounds.time(4));
    report.atMost(name, (rounds.time(0) - rounds.time(1)) / rounds.time(2), 1.25);
}

void measureEncryptedAnswer(Report& report) {
    std::string plain;
    while (plain.size() < 1024 * 1024)
        plain += "{\"to\":\"0700000002\",\"amount\":\"12.50\",\"note\":\"rent, March\"},\n";
    const std::string sent = AES256CBC::encryptString(plain, password).value();
    const std::string iv = Base64::encode(Data(sent.substr(0, 16)).bytes());
    const Data answer(nlohmann::json{{"ResponseData", sent.substr(16)}, {"ResponseIv", iv}}.dump());

    DecryptResponseInterceptor interceptor(password);
    const auto ours = [&] { return interceptor.parseResponse(Data(answer)).raw(); };
    const auto ordinarily = [&] {
        const auto json = nlohmann::json::parse(answer.raw());
        const std::string text =
            json.at("ResponseIv").get<std::string>() + json.at("ResponseData").get<std::string>();
        return ordinary::decryptString(text, password).value();
    };
    if (ours() != plain || ordinarily() != plain) giveUp("the sides disagree");
    const Rounds rounds =
        takeTurns({repeating([&] { keep(ours()); }), repeating([&] { keep(ordinarily()); })},
                  {.rounds = 15, .turn = 0.02});
    const std::string name = "decrypt-1MiB-answer-over-nlohmann-and-openssl";
    report.time(name, "torvel", rounds.time(0));
    report.time(name, "peer", rounds.time(1));
    report.atMost(name, rounds.ratio(0, 1), 0.05);
}

void allowManyDescriptors() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace
}  // namespace torvel::bench

int main() {
    using namespace torvel;
    using namespace torvel::bench;
    keepFreedMemory();
    allowManyDescriptors();
    runOnProcessor(0);
    const Folder folder;
    const std::string authority = (folder / "ca.pem").string();
    setenv("SSL_CERT_FILE", authority.c_str(), 1);
    Bundle::setMain(folder.path(), "bench");
    const Nginx nginx(folder);

    Report report("network");
    compareClients(report, nginx, authority);
    measureHanging(report, authority);
    measureUpload(report);
    measureEncryptedPost(report, folder);
    measureEncryptedAnswer(report);
    return report.exitCode();
}
