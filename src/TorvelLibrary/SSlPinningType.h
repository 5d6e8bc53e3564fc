#pragma once

#include <string>
#include <utility>
#include <vector>

namespace torvel {

// How the server's TLS trust is pinned. Pins come after the default evaluation, never instead of it. A value;
// threads may share one that none changes.
class SSlPinningType {
  public:
    // What is compared with what the server shows.
    enum class Kind { certificate, publicKey, none };

    // By certificates: names (without extension) of DER files, type "der", in the main bundle.
    static SSlPinningType certificate(std::vector<std::string> files) {
        return {Kind::certificate, std::move(files)};
    }
    // By public keys: each the text of a PEM SubjectPublicKeyInfo.
    static SSlPinningType publicKey(std::vector<std::string> keys) {
        return {Kind::publicKey, std::move(keys)};
    }
    // Not at all: the platform's default evaluation.
    static SSlPinningType none() { return {Kind::none, {}}; }

    // What is compared.
    Kind kind() const { return m_kind; }
    // The file names or key texts.
    const std::vector<std::string>& pins() const { return m_pins; }
    bool operator==(const SSlPinningType&) const = default;

  private:
    SSlPinningType(Kind kind, std::vector<std::string> pins) : m_kind(kind), m_pins(std::move(pins)) {}
    Kind m_kind;
    std::vector<std::string> m_pins;
};

}  // namespace torvel
