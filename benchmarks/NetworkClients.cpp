#include "NetworkClients.h"

#include "Bench.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/http/Session.h"

#include <functional>
#include <thread>

#include <curl/curl.h>
#include <httplib.h>

namespace torvel::bench {
namespace {

constexpr std::string_view mimeType = "application/json";

void demand(bool good, std::string_view client) {
    if (!good) giveUp(std::string(client) + ": a request failed");
}

class TorvelClient : public HoldingClient {
  public:
    void get(const Load& load, std::size_t total) override {
        sendInTurns(total, load.inFlight, [&](std::function<void()> done) {
            m_client.getRequest(
                load.url, mimeType, {}, {},
                [done = std::move(done)](const Data& answer) {
                    demand(!answer.empty(), "torvel");
                    done();
                },
                [](const Decodable&) { demand(false, "torvel"); });
        });
    }

    void hold(const Load& load, std::size_t count, const std::function<bool()>& held) override {
        for (; count > 0; --count)
            m_client.getRequest(
                load.url, mimeType, {}, {}, [](const Data&) {}, [](const Decodable&) {});
        while (!held()) DispatchQueue::main().runUntil(held, std::chrono::milliseconds(1));
    }

  private:
    TorvelNetworkClient m_client;
};

class CurlClient : public HoldingClient {
  public:
    explicit CurlClient(std::string authority) : m_authority(std::move(authority)) {
        // What the library's requests say, to the letter: libcurl writes a field character by character.
        HTTPHeaders fields = URLSessionConfiguration::defaults().headers;
        fields.set("Content-Type", mimeType);
        for (const auto& [name, value] : fields.fields())
            m_fields = curl_slist_append(m_fields, (name + ": " + value).c_str());
    }
    ~CurlClient() override {
        for (auto& request : m_requests) curl_easy_cleanup(request->easy);
        curl_multi_cleanup(m_multi);
        curl_slist_free_all(m_fields);
    }

    void get(const Load& load, std::size_t total) override {
        curl_multi_setopt(m_multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(load.connections));
        std::size_t started = 0, done = 0;
        while (started < std::min(load.inFlight, total)) start(idleRequest(), load.url), ++started;
        while (done < total) {
            int running = 0, left = 0;
            curl_multi_perform(m_multi, &running);
            const std::size_t before = done;
            while (const CURLMsg* message = curl_multi_info_read(m_multi, &left)) {
                Request& request = finished(*message);
                ++done;
                if (started < total) start(request, load.url), ++started;
            }
            if (done == before) curl_multi_poll(m_multi, nullptr, 0, 1000, nullptr);
        }
    }

    void hold(const Load& load, std::size_t count, const std::function<bool()>& held) override {
        curl_multi_setopt(m_multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(load.connections));
        for (; count > 0; --count) start(idleRequest(), load.url);
        for (int running = 0; !held(); curl_multi_poll(m_multi, nullptr, 0, 1, nullptr))
            curl_multi_perform(m_multi, &running);
    }

  private:
    struct Request {
        CURL* easy = curl_easy_init();
        std::string body;
        bool busy = false;
    };

    Request& idleRequest() {
        for (auto& request : m_requests)
            if (!request->busy) return *request;
        Request& request = *m_requests.emplace_back(std::make_unique<Request>());
        curl_easy_setopt(request.easy, CURLOPT_PRIVATE, &request);
        curl_easy_setopt(request.easy, CURLOPT_HTTPHEADER, m_fields);
        curl_easy_setopt(request.easy, CURLOPT_CAINFO, m_authority.c_str());
        curl_easy_setopt(request.easy, CURLOPT_CAPATH, nullptr);
        curl_easy_setopt(request.easy, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(request.easy, CURLOPT_PIPEWAIT, 1L);
        curl_easy_setopt(request.easy, CURLOPT_WRITEFUNCTION, &CurlClient::write);
        curl_easy_setopt(request.easy, CURLOPT_WRITEDATA, &request);
        return request;
    }

    void start(Request& request, const std::string& url) {
        request.body.clear();
        request.busy = true;
        curl_easy_setopt(request.easy, CURLOPT_URL, url.c_str());
        curl_multi_add_handle(m_multi, request.easy);
    }

    Request& finished(const CURLMsg& message) {
        Request* request = nullptr;
        long status = 0;
        CURL* const easy = message.easy_handle;
        const CURLcode code = message.data.result;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &request);
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        curl_multi_remove_handle(m_multi, easy);
        demand(code == CURLE_OK && status == 200 && !request->body.empty(), "libcurl");
        request->busy = false;
        return *request;
    }

    static std::size_t write(char* bytes, std::size_t, std::size_t size, void* request) {
        static_cast<Request*>(request)->body.append(bytes, size);
        return size;
    }

    std::string m_authority;
    CURLM* m_multi = curl_multi_init();
    curl_slist* m_fields = nullptr;
    std::vector<std::unique_ptr<Request>> m_requests;
};

class HttplibClient : public Client {
  public:
    explicit HttplibClient(std::string authority) : m_authority(std::move(authority)) {}

    void get(const Load& load, std::size_t total) override {
        while (m_clients.size() < load.inFlight) {
            m_clients.push_back(std::make_unique<httplib::Client>(load.url.substr(0, load.url.rfind('/'))));
            m_clients.back()->set_keep_alive(true);
            m_clients.back()->set_tcp_nodelay(true);
            m_clients.back()->set_ca_cert_path(m_authority);
        }
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < load.inFlight; ++i)
            threads.emplace_back([&, i] {
                const std::size_t share = total / load.inFlight + (i < total % load.inFlight ? 1 : 0);
                for (std::size_t sent = 0; sent < share; ++sent) {
                    const auto answer = m_clients[i]->Get("/", m_fields);
                    demand(answer && answer->status == 200 && !answer->body.empty(), "cpp-httplib");
                }
            });
        for (std::thread& thread : threads) thread.join();
    }

  private:
    std::string m_authority;
    std::vector<std::unique_ptr<httplib::Client>> m_clients;
    const httplib::Headers m_fields{{"Content-Type", "application/json"},
                                    {"Accept-Encoding", "identity"},
                                    {"Accept-Language", "en;q=1.0"},
                                    {"User-Agent", "bench/1.0"}};
};

}  // namespace

void sendInTurns(std::size_t total, std::size_t inFlight,
                 const std::function<void(std::function<void()> done)>& send) {
    std::size_t started = 0, done = 0;
    const std::function<void()> start = [&] {
        ++started;
        send([&] {
            if (started < total) start();
            if (++done == total) DispatchQueue::main().stop();
        });
    };
    while (started < std::min(inFlight, total)) start();
    DispatchQueue::main().run();
}

std::unique_ptr<HoldingClient> torvelClient() { return std::make_unique<TorvelClient>(); }
std::unique_ptr<HoldingClient> curlClient(const std::string& authority) {
    return std::make_unique<CurlClient>(authority);
}
std::unique_ptr<Client> httplibClient(const std::string& authority) {
    return std::make_unique<HttplibClient>(authority);
}

}  // namespace torvel::bench
