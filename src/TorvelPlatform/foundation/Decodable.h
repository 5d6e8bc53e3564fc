#pragma once

namespace torvel {

// The base of every record that can be decoded from a server's answer. Callers that receive a Decodable
// recover the record by a type test (dynamic_cast). Threads may share one that none changes.
class Decodable {
  public:
    virtual ~Decodable() = default;

  protected:
    Decodable() = default;
    Decodable(const Decodable&) = default;
    Decodable(Decodable&&) = default;
    Decodable& operator=(const Decodable&) = default;
    Decodable& operator=(Decodable&&) = default;
};

}  // namespace torvel
