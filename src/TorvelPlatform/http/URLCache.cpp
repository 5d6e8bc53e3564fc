#include "TorvelPlatform/http/URLCache.h"

#include "TorvelPlatform/http/Curl.h"
#include "TorvelPlatform/http/HeaderText.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <list>
#include <mutex>

namespace torvel {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

// RFC 9111, 1.2.2: larger numbers count as this one.
constexpr seconds longestLifetime{1U << 31U};

std::optional<seconds> parseSeconds(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    std::int64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc()) return longestLifetime;
    return std::min(seconds(number), longestLifetime);
}

// The directives of a Cache-Control field (RFC 9111, 5.2).
class CacheControl {
  public:
    explicit CacheControl(const HTTPHeaders& headers)
        : m_text(headers.value("Cache-Control").value_or("")), m_directives(listItems(m_text)) {}

    // The directive's argument, empty when it has none; absent when the directive is.
    std::optional<std::string_view> find(std::string_view name) const {
        for (const std::string_view directive : m_directives) {
            const std::size_t equals = std::min(directive.find('='), directive.size());
            if (equalsIgnoringCase(trimmed(directive.substr(0, equals)), name))
                return trimmed(directive.substr(std::min(equals + 1, directive.size())));
        }
        return std::nullopt;
    }
    bool has(std::string_view name) const { return find(name).has_value(); }

  private:
    std::string m_text;
    std::vector<std::string_view> m_directives;
};

std::optional<std::chrono::sys_seconds> parseDate(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    loadCurl();
    const std::time_t date = curl_getdate(text->c_str(), nullptr);
    if (date == -1) return std::nullopt;
    return std::chrono::sys_seconds(seconds(date));
}

// How long a response stays fresh from now on (RFC 9111, 4.2.1 and 4.2.3). Only what the server says counts;
// nothing is guessed from Last-Modified.
std::optional<seconds> remainingLifetime(const HTTPHeaders& headers, const CacheControl& control) {
    std::optional<seconds> lifetime;
    if (const auto maximumAge = control.find("max-age")) {
        lifetime = parseSeconds(*maximumAge);
    } else if (headers.value("Expires")) {
        const auto now = std::chrono::floor<seconds>(std::chrono::system_clock::now());
        const auto expires = parseDate(headers.value("Expires"));
        if (expires)
            lifetime = std::min(*expires - parseDate(headers.value("Date")).value_or(now), longestLifetime);
    }
    if (!lifetime) return std::nullopt;
    return *lifetime - parseSeconds(headers.value("Age").value_or("")).value_or(seconds(0));
}

bool isSafe(std::string_view method) {
    return method == "GET" || method == "HEAD" || method == "OPTIONS" || method == "TRACE";
}

bool mayBeServed(const URLRequest& request) {
    const CacheControl control(request.headers);
    return request.url && request.httpMethod == "GET" && !request.httpBody &&
           request.cachePolicy == URLRequestCachePolicy::useProtocolCachePolicy && !control.has("no-store") &&
           !control.has("no-cache") && control.find("max-age") != "0" && !request.headers.value("Range") &&
           !request.headers.value("Pragma");
}

bool mayBeKept(const URLRequest& request, const HTTPURLResponse& response, const CacheControl& control) {
    if (request.httpMethod != "GET" || response.statusCode != 200) return false;
    if (CacheControl(request.headers).has("no-store") || request.headers.value("Range")) return false;
    if (control.has("no-store") || control.has("no-cache")) return false;
    // Both belong to one user, and the next request may be another's.
    if (request.headers.value("Authorization") && !control.has("public")) return false;
    if (response.headers.value("Set-Cookie")) return false;
    // The jar adds its cookies later, so that a request here does not show those that select an answer.
    const std::string vary = response.headers.value("Vary").value_or("");
    const auto names = listItems(vary);
    return std::none_of(names.begin(), names.end(), [](std::string_view name) {
        return name == "*" || equalsIgnoringCase(name, "Cookie");
    });
}

// How long the response may be kept; absent when not at all.
std::optional<seconds> keptLifetime(const URLRequest& request, const HTTPURLResponse& response) {
    const CacheControl control(response.headers);
    const std::optional<seconds> lifetime = remainingLifetime(response.headers, control);
    if (!lifetime || *lifetime <= seconds(0) || !mayBeKept(request, response, control)) return std::nullopt;
    return lifetime;
}

// The URL without its fragment, which never reaches the server.
std::string keyOf(const URL& url) {
    const std::string& text = url.absoluteString();
    return text.substr(0, text.find('#'));
}

// A field of the request that the response was selected by (RFC 9110, 12.5.5).
struct VaryField {
    std::string name;
    std::optional<std::string> value;
};

std::vector<VaryField> varyFields(const URLRequest& request, const HTTPURLResponse& response) {
    std::vector<VaryField> fields;
    const std::string names = response.headers.value("Vary").value_or("");
    for (const std::string_view name : listItems(names))
        fields.push_back({std::string(name), request.headers.value(name)});
    return fields;
}

}  // namespace

struct URLCache::State {
    struct Entry {
        std::string key;
        std::vector<VaryField> selecting;
        Clock::time_point freshUntil;
        std::size_t cost;
        CachedResponse cached;

        bool matches(const URLRequest& request) const {
            return std::all_of(selecting.begin(), selecting.end(), [&](const VaryField& field) {
                return request.headers.value(field.name) == field.value;
            });
        }
    };

    explicit State(std::size_t memoryCapacity) : capacity(memoryCapacity) {}

    template <class Doomed>
    void eraseIf(Doomed doomed) {
        std::erase_if(entries, [&](const Entry& entry) {
            if (!doomed(entry)) return false;
            used -= entry.cost;
            return true;
        });
    }

    void keep(Entry entry) {
        entry.cost = entry.key.size() + entry.cached.data.size();
        for (const auto& [name, value] : entry.cached.response.headers.fields())
            entry.cost += name.size() + value.size();
        if (entry.cost > capacity) return;
        used += entry.cost;
        entries.push_back(std::move(entry));
        while (used > capacity) {
            used -= entries.front().cost;
            entries.pop_front();
        }
    }

    const std::size_t capacity;
    std::mutex mutex;
    std::list<Entry> entries;  // the oldest first
    std::size_t used = 0;
};

URLCache::URLCache(std::size_t memoryCapacity) : m_state(std::make_unique<State>(memoryCapacity)) {}

URLCache::~URLCache() = default;

URLCache& URLCache::shared() {
    constexpr std::size_t capacity = std::size_t{4} * 1024 * 1024;
    static URLCache& cache = *new URLCache(capacity);  // never destroyed: session threads use it to the end
    return cache;
}

std::optional<URLCache::CachedResponse> URLCache::cachedResponse(const URLRequest& forRequest) {
    const std::lock_guard lock(m_state->mutex);
    if (m_state->entries.empty() || !mayBeServed(forRequest)) return std::nullopt;
    const std::string key = keyOf(*forRequest.url);
    const Clock::time_point now = Clock::now();
    m_state->eraseIf([now](const State::Entry& entry) { return entry.freshUntil <= now; });
    for (const State::Entry& entry : m_state->entries)
        if (entry.key == key && entry.matches(forRequest)) return entry.cached;
    return std::nullopt;
}

void URLCache::store(const URLRequest& request, const CachedResponse& response) {
    if (!request.url) return;
    const HTTPURLResponse& head = response.response;
    const std::optional<seconds> lifetime = keptLifetime(request, head);
    const std::lock_guard lock(m_state->mutex);
    if (!lifetime && m_state->entries.empty()) return;
    const std::string key = keyOf(*request.url);
    // A newer answer replaces the older one; an unsafe method makes every kept one stale (RFC 9111, 4.4).
    const bool unsafe = !isSafe(request.httpMethod) && head.statusCode < 400;
    m_state->eraseIf([&](const State::Entry& old) {
        return old.key == key && (unsafe || (request.httpMethod == "GET" && old.matches(request)));
    });
    if (lifetime) m_state->keep({key, varyFields(request, head), Clock::now() + *lifetime, 0, response});
}

void URLCache::removeAllCachedResponses() {
    const std::lock_guard lock(m_state->mutex);
    m_state->entries.clear();
    m_state->used = 0;
}

}  // namespace torvel
