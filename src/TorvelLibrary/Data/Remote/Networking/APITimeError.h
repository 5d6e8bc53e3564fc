#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Decodable.h"
#include "TorvelPlatform/foundation/JSON.h"

#include <optional>
#include <string>

namespace torvel {

// Why a record could not be decoded: a sentence that names the member.
struct DecodingError {
    std::string description;  // the sentence
};

// What onError receives: why a request failed. Servers send the same record as
// {"message": text, "errorCode": text, "receivedResponse": base64 (optional)}.
class APITimeError : public Decodable {
  public:
    // A record of these three members.
    APITimeError(std::string localizedDescription, std::string errorCodeInResponse,
                 std::optional<Data> receivedDataInResponse)
        : m_localizedDescription(std::move(localizedDescription)),
          m_errorCodeInResponse(std::move(errorCodeInResponse)),
          m_receivedDataInResponse(std::move(receivedDataInResponse)) {}

    // From a server's record. Only the short names are known, and the two texts must be strings.
    static Outcome<APITimeError, DecodingError> decode(const JSON& container);

    // The text for the user or the developer.
    const std::string& localizedDescription() const { return m_localizedDescription; }
    // The HTTP status as decimal text, "-1" when there was no answer.
    const std::string& errorCodeInResponse() const { return m_errorCodeInResponse; }
    // The body as received, absent when there was none.
    const std::optional<Data>& receivedDataInResponse() const { return m_receivedDataInResponse; }

  private:
    std::string m_localizedDescription;
    std::string m_errorCodeInResponse;
    std::optional<Data> m_receivedDataInResponse;
};

}  // namespace torvel
