#pragma once

#include <any>
#include <concepts>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace torvel {

// A key of any type that can be compared and hashed. Texts of every kind are kept as std::string, so that
// "x" and std::string("x") are the same key. A value; threads may share one that none changes.
class AnyHashable {
  public:
    // The key of a text.
    AnyHashable(std::string_view text) : AnyHashable(std::string(text)) {}
    AnyHashable(const char* text) : AnyHashable(std::string(text)) {}

    // A key of any other type.
    template <std::equality_comparable T>
    requires(!std::same_as<T, AnyHashable>) AnyHashable(T value)
        : m_hash(std::hash<T>{}(value)),
          m_value(std::move(value)),
          m_equals([](const std::any& a, const std::any& b) {
              return std::any_cast<const T&>(a) == std::any_cast<const T&>(b);
          }) {}

    // Equal in type and value.
    bool operator==(const AnyHashable& other) const {
        return m_value.type() == other.m_value.type() && m_equals(m_value, other.m_value);
    }
    // The hash of the value.
    std::size_t hash() const { return m_hash; }

    // The key as a T; nullptr when it is of another type.
    template <class T>
    const T* as() const {
        return std::any_cast<T>(&m_value);
    }

  private:
    std::size_t m_hash;
    std::any m_value;
    bool (*m_equals)(const std::any&, const std::any&);
};

// A loosely typed dictionary: any hashable key, any copyable value. What the query of a URL becomes, and
// what route callbacks receive.
class PayloadDictionary {
  public:
    // The value under a key as a T; absent when there is none or it is of another type.
    //   const std::optional<std::string> id = payload.get<std::string>("id");
    template <class T>
    std::optional<T> get(const AnyHashable& key) const {
        const auto found = m_values.find(key);
        if (found == m_values.end()) return std::nullopt;
        if (const T* const value = std::any_cast<T>(&found->second)) return *value;
        return std::nullopt;
    }

    // Sets or replaces. Texts of every kind are kept as std::string.
    void set(AnyHashable key, std::string_view text) { set(std::move(key), std::string(text)); }
    void set(AnyHashable key, const char* text) { set(std::move(key), std::string(text)); }
    template <class T>
    void set(AnyHashable key, T value) {
        m_values.insert_or_assign(std::move(key), std::any(std::move(value)));
    }

    // Removes what stands under a key, if anything does.
    void remove(const AnyHashable& key) { m_values.erase(key); }
    // Whether anything stands under a key, of whichever type.
    bool contains(const AnyHashable& key) const { return m_values.contains(key); }
    // How many keys there are, and whether there is none.
    std::size_t size() const { return m_values.size(); }
    bool empty() const { return m_values.empty(); }

    // Key and std::any pairs, in no order.
    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }

  private:
    struct Hash {
        std::size_t operator()(const AnyHashable& key) const { return key.hash(); }
    };
    std::unordered_map<AnyHashable, std::any, Hash> m_values;
};

}  // namespace torvel
