#pragma once  // internal

#include "sandbox/HttpExchange.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace torvel::sandbox {

// The wallet behind /api/v1, in the clear: one account, its balance and its statement. Any thread.
class Wallet {
  public:
    Wallet();

    // `plainText` is the request's body, opened when it was sealed. 404 for a path that is not the wallet's.
    Reply answer(const Call& call, const std::string& plainText);

  private:
    struct Route;
    static const Route routes[];

    Reply login(const Call& call, const nlohmann::json& body);
    Reply balance(const Call& call, const nlohmann::json& body);
    Reply transfer(const Call& call, const nlohmann::json& body);
    Reply statement(const Call& call, const nlohmann::json& body);
    Reply documents(const Call& call, const nlohmann::json& body);
    Reply rates(const Call& call, const nlohmann::json& body);
    bool authorised(const Call& call) const;

    std::mutex m_mutex;
    std::string m_token;  // empty: nobody has logged in
    std::int64_t m_cents;
    nlohmann::json m_entries = nlohmann::json::array();
};

}  // namespace torvel::sandbox
