#pragma once

#include "TorvelPlatform/foundation/Outcome.h"

#include <array>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// Why a text is not JSON; `description` is a sentence fit for a log.
struct JSONError {
    std::string description;  // the sentence
};

// A read-only JSON document (RFC 8259), or a value inside one. Values keep their document alive and are
// cheap to copy. Safe to read from any thread.
class JSON {
  public:
    // Validates the whole document. Scalars are documents too; numbers may have any size; a leading byte
    // order mark is skipped; nesting ends at 1024 levels.
    static Outcome<JSON, JSONError> parse(std::string_view text);

    // What the value is.
    bool isObject() const;
    bool isNull() const;
    bool isTrue() const;
    // The member of an object; absent when this is no object or has no such member. Of members with the
    // same name the last one counts.
    std::optional<JSON> member(std::string_view name) const;
    // The text of a string value, valid as long as any value of the document lives; absent for other kinds.
    std::optional<std::string_view> string() const;
    // The value of a number; absent for other kinds, and for every number of a document that holds one which
    // no machine word does.
    std::optional<double> number() const;
    // The elements of an array, in order; empty for other kinds.
    std::vector<JSON> elements() const;

  private:
    struct Document;
    // The parser's handle of a value: two words, whose meaning JSON.cpp knows.
    using Element = std::array<std::uintptr_t, 2>;

    JSON(std::shared_ptr<const Document> document, Element element)
        : m_document(std::move(document)), m_element(element) {}

    std::shared_ptr<const Document> m_document;
    Element m_element;
};

// A member to write: texts, not yet escaped.
struct JSONMember {
    std::string_view name;   // of the member
    std::string_view value;  // a text
};

// Writes an object of string members in the given order, pretty-printed: one member a line, indented by two
// spaces, `"name" : "value"`, "/" escaped, as the platform's writer lays it out. Absent when a text is not
// valid UTF-8.
std::optional<std::string> prettyPrintedJSON(std::initializer_list<JSONMember> members);

}  // namespace torvel
