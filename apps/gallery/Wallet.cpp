#include "gallery/Wallet.h"

#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/navigation/AppRouter.h"
#include "sample/TokenInterceptor.h"

#include <algorithm>

namespace torvel::gallery {
namespace {

constexpr char json[] = "application/json";
constexpr std::size_t keptTraces = 12;

std::string member(const JSON& object, std::string_view name) {
    const auto value = object.member(name);
    return std::string(value ? value->string().value_or("") : "");
}

std::string object(std::initializer_list<JSONMember> members) {
    return prettyPrintedJSON(members).value_or("{}");  // a field never holds what is no text
}

}  // namespace

struct Wallet::Call {
    std::string endpoint;
    std::optional<std::string> body = std::nullopt;  // absent: a GET
    bool isSealed = false;
    Answer answer;
};

void Wallet::logIn(const std::string& number, const std::string& pin) {
    send({.endpoint = "login",
          .body = object({{"msisdn", number}, {"pin", pin}}),
          .answer = [this](const JSON& answer) {
              m_token = member(answer, "token");
              m_name = member(answer, "name");
              AppRouter::sharedInstance()->setAuthenticated(true);
              refresh();
          }});
}

void Wallet::logOut() {
    m_token.clear();
    m_entries.clear();
    m_lastTransfer.reset();
    m_fault = Fault::none;
    AppRouter::sharedInstance()->setAuthenticated(false);
    m_changed();
}

void Wallet::refresh() {
    send({.endpoint = "balance", .answer = [this](const JSON& answer) {
              m_balance = member(answer, "balance");
              send({.endpoint = "statement", .answer = [this](const JSON& list) { takeStatement(list); }});
          }});
}

void Wallet::transfer(const std::string& to, const std::string& amount, const std::string& note) {
    send({.endpoint = "transfer",
          .body = object({{"to", to}, {"amount", amount}, {"note", note}}),
          .isSealed = true,
          .answer = [this](const JSON& answer) { takeTransfer(answer); }});
}

void Wallet::takeStatement(const JSON& answer) {
    m_entries.clear();
    const auto entries = answer.member("entries");
    for (const JSON& entry : entries ? entries->elements() : std::vector<JSON>())
        m_entries.push_back({member(entry, "reference"), member(entry, "to"), member(entry, "amount"),
                             member(entry, "note")});
    std::ranges::reverse(m_entries);
}

void Wallet::takeTransfer(const JSON& answer) {
    const auto exchanges = m_backend.exchanges();
    if (exchanges.empty()) return;
    m_lastTransfer = {member(answer, "reference"), exchanges.back().body, exchanges.back().plainText};
    refresh();
}

void Wallet::send(Call call) {
    const auto target = EndpointsHelper::getEndPoint<std::string>(call.endpoint);
    const auto trace = std::make_shared<Trace>((call.body ? "POST " : "GET ") + target);
    m_traces.push_front(trace);
    if (m_traces.size() > keptTraces) m_traces.pop_back();
    m_fault = Fault::none;
    ++m_running;
    m_changed();

    RequestInterceptors before;
    ResponseInterceptors after{std::make_shared<ResponseProbe>(trace, "TLS · server.der")};
    const auto add = [&](std::shared_ptr<RequestWrapper> interceptor, const char* name) {
        before.push_back(std::move(interceptor));
        before.push_back(std::make_shared<RequestProbe>(trace, name));
    };
    if (isLoggedIn()) add(std::make_shared<TokenInterceptor>(m_token), "TokenInterceptor");
    if (call.isSealed) {
        const std::string key = AES256CBC::generatePassword();
        add(std::make_shared<EncryptRequestInterceptor>(key), "EncryptRequestInterceptor");
        after.push_back(std::make_shared<DecryptResponseInterceptor>(key));
        after.push_back(std::make_shared<ResponseProbe>(trace, "DecryptResponseInterceptor"));
    }
    const auto onSuccess = [this, trace, answer = call.answer](Data body) {
        const auto read = JSON::parse(body.raw());
        const bool isDeclined = !read || read.value().member("errorCode").has_value();
        end(trace, isDeclined ? Fault::declined : Fault::none);
        if (!isDeclined) answer(read.value());
        m_changed();
    };
    const auto onError = [this, trace](const Decodable& error) {
        const auto& record = dynamic_cast<const APITimeError&>(error);
        trace->add("onError", record.errorCodeInResponse() + " " + record.localizedDescription());
        end(trace, record.errorCodeInResponse() == "401" ? Fault::refused : Fault::offline);
        m_changed();
    };
    if (call.body)
        TorvelNetworkClient().postRequest(target, Data(*call.body), json, before, after, onSuccess, onError);
    else
        TorvelNetworkClient().getRequest(target, json, before, after, onSuccess, onError);
}

void Wallet::end(const std::shared_ptr<Trace>& trace, Fault fault) {
    --m_running;
    m_fault = fault;
    trace->isEnded = true;
    trace->isOk = fault == Fault::none;
    if (trace->isOk) trace->add("onSuccess", "");
    LogUtils::i(trace->title + (trace->isOk ? " succeeded" : " failed"));
}

}  // namespace torvel::gallery
