#include "sandbox/Misbehaviour.h"

#include "sandbox/Encoding.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include <nlohmann/json.hpp>

namespace torvel::sandbox {

namespace {

using Json = nlohmann::json;
using Ending = Connection::Ending;
using std::chrono::milliseconds;

constexpr std::size_t dayInMilliseconds = 24 * 60 * 60 * 1000;
constexpr std::size_t largestBody = std::size_t{1} << 30;

Reply badQuery(const std::string& what) { return errorReply(400, what, "BAD_QUERY"); }

std::optional<std::size_t> number(const Scene& scene, const char* name, std::size_t fallback,
                                  std::size_t most) {
    const auto text = scene.call.query(name);
    if (!text) return fallback;
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (error != std::errc() || end != text->data() + text->size() || value > most) return std::nullopt;
    return value;
}

// Answers by hand are the connection's last words.
Reply gone(Connection& connection, Ending ending) {
    connection.end(ending);
    return {0, ""};
}

Reply status(const Scene& scene) {
    const auto code = number(scene, "code", 200, 599);
    if (!code || *code < 200) return badQuery("code is not 200 to 599");
    Reply reply{static_cast<int>(*code), scene.call.query("body").value_or(""),
                scene.call.query("type").value_or("application/json")};
    const auto [first, last] = scene.call.queries.equal_range("field");
    for (auto field = first; field != last; ++field) {
        const std::size_t colon = field->second.find(':');
        if (colon == std::string::npos) return badQuery("field is not NAME:VALUE");
        reply.fields.emplace_back(field->second.substr(0, colon), field->second.substr(colon + 1));
    }
    return reply;
}

Reply delay(const Scene& scene) {
    const auto ms = number(scene, "ms", 1000, dayInMilliseconds);
    if (!ms) return badQuery("ms is not a number of milliseconds");
    if (!scene.connection.wait(milliseconds(*ms))) return gone(scene.connection, Ending::orderly);
    return {200, "{}"};
}

Reply hang(const Scene& scene) {
    scene.connection.wait(std::nullopt);
    return gone(scene.connection, Ending::orderly);
}

Reply drip(const Scene& scene) {
    const auto bytes = number(scene, "bytes", 16, largestBody);
    const auto ms = number(scene, "ms", 50, dayInMilliseconds);
    if (!bytes || !ms) return badQuery("bytes and ms are not numbers");
    Connection& connection = scene.connection;
    bool there = connection.write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\n" +
                                  ("Content-Length: " + std::to_string(*bytes)) + "\r\n\r\n");
    for (std::size_t sent = 0; there && sent < *bytes; ++sent)
        there = connection.wait(milliseconds(*ms)) && connection.write(".");
    return gone(connection, Ending::orderly);
}

struct Framing {
    const char *name, *field, *half;
};
// Half of a JSON text, as each way to frame a body (RFC 9112, section 6) would carry it.
constexpr Framing framings[] = {
    {"length", "Content-Length: 30\r\n", "{\"status\":\"ok\","},
    {"chunked", "Transfer-Encoding: chunked\r\n", "1e\r\n{\"status\":\"ok\","},
    {"close", "Connection: close\r\n", "{\"status\":\"ok\","},
};

std::optional<Ending> endingNamed(const std::string& name) {
    if (name == "orderly") return Ending::orderly;
    if (name == "cut") return Ending::cut;
    if (name == "reset") return Ending::reset;
    return std::nullopt;
}

Reply truncate(const Scene& scene) {
    const std::string name = scene.call.query("framing").value_or("length");
    const Framing* framing = std::find_if(std::begin(framings), std::end(framings),
                                          [&](const Framing& each) { return name == each.name; });
    const auto ending = endingNamed(scene.call.query("end").value_or("orderly"));
    if (framing == std::end(framings)) return badQuery("framing is not length, chunked or close");
    if (!ending) return badQuery("end is not orderly, cut or reset");
    scene.connection.write(std::string("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n") +
                           framing->field + "\r\n" + framing->half);
    return gone(scene.connection, *ending);
}

Reply reset(const Scene& scene) { return gone(scene.connection, Ending::reset); }

Reply wrongType(const Scene&) { return {200, R"({"status":"ok"})", "text/html"}; }

Reply redirect(const Scene& scene) {
    const auto to = scene.call.query("to");
    const auto code = number(scene, "status", 307, 308);
    if (!to || !code || *code < 300) return badQuery("redirect needs to=URL and a status of 300 to 308");
    return {static_cast<int>(*code), "", "", {{"Location", *to}}};
}

Reply loop(const Scene&) { return {302, "", "", {{"Location", "/misbehave/loop"}}}; }

Reply unsealed(const Scene&) { return {200, R"({"status":"ok"})"}; }

Reply garbage(const Scene& scene) {
    const std::string kind = scene.call.query("kind").value_or("data-not-base64");
    if (kind == "array") return {200, "[1]"};
    if (kind == "scalar") return {200, "1"};
    if (kind == "not-json") return {200, R"({"ResponseData":)"};
    const bool payload = scene.form == EnvelopeForm::payload;
    const char* data = payload ? "payloadText" : "ResponseData";
    const char* iv = payload ? "payloadVariable" : "ResponseIv";
    const std::string& key = scene.keyText;
    if (key.empty()) return badQuery("a sealed answer needs the request's key");
    const bool padded = kind != "bad-padding";
    // Without padding the last byte of the plain text stands where the padding's length would: '~' is 126.
    const auto sealed = sealResponse(padded ? R"({"status":"ok"})" : "this is no pad ~",
                                     kind == "wrong-key" ? hex(randomBytes(key.size() / 2)) : key, scene.form,
                                     padded ? Padding::pkcs7 : Padding::none);
    Json envelope = Json::parse(sealed.value_or("{}"));
    if (kind == "data-not-base64")
        envelope[data] = "*not base64*";
    else if (kind == "iv-not-base64")
        envelope[iv] = "*not base64, 24 octets!*";
    else if (kind == "no-iv")
        envelope.erase(iv);
    else if (kind == "iv-not-text")
        envelope[iv] = 1;
    else if (kind == "not-blocks")
        envelope[data] = base64("fifteen octets.");
    else if (padded && kind != "wrong-key")
        return badQuery("there is no garbage of kind " + kind);
    return {200, envelope.dump()};
}

Reply encoded(const Scene& scene) {
    const std::string coding = scene.call.query("coding").value_or("gzip");
    auto body = contentCoded(coding, R"({"status":"ok","filler":")" + std::string(2000, 'x') + "\"}");
    if (!body) return badQuery("coding is not gzip, deflate or br");
    const auto cut = number(scene, "cut", 0, body->size());
    if (!cut) return badQuery("cut is more than the body");
    body->resize(body->size() - *cut);
    return {200, std::move(*body), "application/json", {{"Content-Encoding", coding}}};
}

Reply large(const Scene& scene) {
    const auto bytes = number(scene, "bytes", 1 << 20, largestBody);
    if (!bytes) return badQuery("bytes is not a number up to 1 GiB");
    return {200, std::string(*bytes, 'x'), "application/octet-stream"};
}

struct Misbehaviour {
    const char* name;
    Reply (*act)(const Scene&);
};
constexpr Misbehaviour misbehaviours[] = {
    {"status", status},
    {"delay", delay},
    {"hang", hang},
    {"drip", drip},
    {"truncate", truncate},
    {"reset", reset},
    {"wrong-type", wrongType},
    {"redirect", redirect},
    {"loop", loop},
    {"unsealed", unsealed},
    {"garbage", garbage},
    {"encoded", encoded},
    {"large", large},
};

}  // namespace

Reply misbehave(const std::string& name, const Scene& scene) {
    for (const Misbehaviour& each : misbehaviours)
        if (name == each.name) return each.act(scene);
    return errorReply(404, "There is no misbehaviour named " + name, "NOT_FOUND");
}

}  // namespace torvel::sandbox
