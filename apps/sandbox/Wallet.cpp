#include "sandbox/Wallet.h"

#include "sandbox/Encoding.h"
#include "sandbox/Sandbox.h"

#include <algorithm>
#include <cstdio>

namespace torvel::sandbox {

namespace {

using Json = nlohmann::json;

constexpr std::string_view digits = "0123456789";

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of(digits) == std::string_view::npos;
}

// At most nine digits, then at most two places.
std::optional<std::int64_t> centsOf(const std::string& amount) {
    const std::size_t point = std::min(amount.find('.'), amount.size());
    const std::string whole = amount.substr(0, point);
    std::string places = point < amount.size() ? amount.substr(point + 1) : "00";
    if (!isDigits(whole) || whole.size() > 9 || !isDigits(places) || places.size() > 2) return std::nullopt;
    places.resize(2, '0');
    return std::stoll(whole) * 100 + std::stoll(places);
}

std::string amountOf(std::int64_t cents) {
    const std::string places = std::to_string(cents % 100);
    return std::to_string(cents / 100) + (places.size() < 2 ? ".0" : ".") + places;
}

std::string textMember(const Json& body, const char* name) {
    const auto member = body.find(name);
    return member != body.end() && member->is_string() ? member->get<std::string>() : std::string();
}

// File names and notes come from outside and need not be UTF-8.
Reply jsonReply(const Json& json) { return {200, json.dump(-1, ' ', false, Json::error_handler_t::replace)}; }

}  // namespace

struct Wallet::Route {
    const char *method, *path;
    bool needsToken, needsObject;
    Reply (Wallet::*handler)(const Call&, const Json&);
};

const Wallet::Route Wallet::routes[] = {
    {"POST", "/api/v1/login", false, true, &Wallet::login},
    {"GET", "/api/v1/balance", true, false, &Wallet::balance},
    {"POST", "/api/v1/transfer", true, true, &Wallet::transfer},
    {"GET", "/api/v1/statement", true, false, &Wallet::statement},
    {"POST", "/api/v1/documents", true, false, &Wallet::documents},
    {"GET", "/api/v1/rates", false, false, &Wallet::rates},
};

Wallet::Wallet() : m_cents(*centsOf(walletBalance)) {}

Reply Wallet::answer(const Call& call, const std::string& plainText) {
    const auto samePath = [&](const Route& route) { return call.path == route.path; };
    const Route* route = std::find_if(std::begin(routes), std::end(routes), samePath);
    if (route == std::end(routes)) return errorReply(404, "There is nothing at " + call.path, "NOT_FOUND");
    if (call.method != route->method)
        return errorReply(405, call.path + " takes " + route->method + " alone", "WRONG_METHOD");
    const std::lock_guard lock(m_mutex);
    if (route->needsToken && !authorised(call)) {
        Reply reply = errorReply(401, "The session has ended; log in again", "SESSION_ENDED");
        reply.fields.emplace_back("WWW-Authenticate", "Bearer");
        return reply;
    }
    const Json body = Json::parse(plainText, nullptr, /*allow_exceptions=*/false);
    if (route->needsObject && !body.is_object())
        return errorReply(400, "The body is not a JSON object", "MALFORMED");
    return (this->*route->handler)(call, body);
}

bool Wallet::authorised(const Call& call) const {
    return !m_token.empty() && call.field("Authorization") == "Bearer " + m_token;
}

Reply Wallet::login(const Call&, const Json& body) {
    if (textMember(body, "msisdn") != walletNumber || textMember(body, "pin") != walletPin)
        return errorReply(401, "The number or the PIN is wrong", "LOGIN_REFUSED");
    m_token = hex(randomBytes(16));
    return jsonReply({{"token", m_token}, {"name", "Amina"}});
}

Reply Wallet::balance(const Call&, const Json&) {
    return jsonReply({{"msisdn", walletNumber}, {"currency", "XTS"}, {"balance", amountOf(m_cents)}});
}

Reply Wallet::transfer(const Call&, const Json& body) {
    const std::string to = textMember(body, "to");
    const auto cents = centsOf(textMember(body, "amount"));
    if (!isDigits(to)) return errorReply(400, "\"to\" is not a number of digits", "BAD_RECIPIENT");
    if (!cents || *cents == 0)
        return errorReply(400, "\"amount\" is not a decimal text above zero with at most two places",
                          "BAD_AMOUNT");
    if (*cents > m_cents)
        return errorReply(422, "Insufficient funds: the balance is " + amountOf(m_cents),
                          "INSUFFICIENT_FUNDS");
    m_cents -= *cents;
    Json entry{{"reference", "TX" + std::to_string(m_entries.size() + 1)},
               {"to", to},
               {"amount", amountOf(*cents)},
               {"note", textMember(body, "note")},
               {"balance", amountOf(m_cents)}};
    m_entries.push_back(entry);
    entry.erase("note");
    return jsonReply(entry);
}

Reply Wallet::statement(const Call&, const Json&) { return jsonReply({{"entries", m_entries}}); }

Reply Wallet::documents(const Call& call, const Json&) {
    if (call.parts.size() != 1)
        return errorReply(400, "The body is not multipart/form-data with one part", "NO_DOCUMENT");
    const FormPart& part = call.parts.front();
    return jsonReply({{"field", part.name},
                      {"fileName", part.fileName},
                      {"contentType", part.contentType},
                      {"bytes", part.content.size()},
                      {"sha256", sha256(part.content)}});
}

Reply Wallet::rates(const Call&, const Json&) { return {500, "The rates service is down\n", "text/plain"}; }

}  // namespace torvel::sandbox
