#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Decodable.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "TorvelPlatform/http/SessionError.h"

#include <optional>
#include <string>

namespace torvel {

// Why a record could not be decoded: a sentence that names the member.
struct DecodingError {
    std::string description;  // the sentence
};

// What onError receives: why a request failed. Servers send the same record as
// {"message": text, "errorCode": text, "receivedResponse": base64 (optional)}. A value; threads may share one
// that none changes.
class APITimeError : public Decodable {
  public:
    // `failure` is the pipeline's; a record of a server's has none.
    APITimeError(std::string localizedDescription, std::string errorCodeInResponse,
                 std::optional<Data> receivedDataInResponse,
                 std::optional<SessionError> failure = std::nullopt)
        : m_localizedDescription(std::move(localizedDescription)),
          m_errorCodeInResponse(std::move(errorCodeInResponse)),
          m_receivedDataInResponse(std::move(receivedDataInResponse)),
          m_failure(std::move(failure)) {}

    // From a server's record. Only the short names are known, and the two texts must be strings.
    static Outcome<APITimeError, DecodingError> decode(const JSON& container);

    // The text for the user or the developer.
    const std::string& localizedDescription() const { return m_localizedDescription; }
    // The HTTP status as decimal text, "-1" when there was no answer.
    const std::string& errorCodeInResponse() const { return m_errorCodeInResponse; }
    // The body as received, absent when there was none.
    const std::optional<Data>& receivedDataInResponse() const { return m_receivedDataInResponse; }
    // What failed, to decide by: the kind, the phase of a time-out, the reason of a refused server, and
    // whether the request may have been sent. Its sentence may differ from the record's. Present in every
    // record that onError receives; absent in one that was decoded.
    const std::optional<SessionError>& failure() const { return m_failure; }

  private:
    std::string m_localizedDescription;
    std::string m_errorCodeInResponse;
    std::optional<Data> m_receivedDataInResponse;
    std::optional<SessionError> m_failure;
};

}  // namespace torvel
