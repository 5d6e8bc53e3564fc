#include "TorvelPlatform/defaults/PropertyCoding.h"

#include <bit>
#include <cstring>

namespace torvel {
namespace {

static_assert(std::endian::native == std::endian::little, "numbers are written as they lie in memory");

constexpr int deepest = 64;
constexpr std::size_t largest = std::size_t{64} << 20;

// The kind bytes are the places of the kinds in the variant, which therefore never change.
static_assert(std::is_same_v<std::variant_alternative_t<9, PropertyValue::Kinds>, PropertyValue::Dictionary>);
static_assert(std::variant_size_v<PropertyValue::Kinds> == 10);

template <class T>
concept FixedWidth = std::is_arithmetic_v<T>;

class Encoder {
  public:
    bool append(const PropertyValue& value, int depth) {
        m_bytes += static_cast<char>(value.kinds().index());
        return depth <= deepest &&
               std::visit([&](const auto& content) { return appendContent(content, depth); },
                          value.kinds()) &&
               m_bytes.size() <= largest;
    }
    std::string take() { return std::move(m_bytes); }

  private:
    bool appendContent(FixedWidth auto value, int) {
        m_bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
        return true;
    }
    bool appendContent(PropertyValue::Date date, int depth) {
        const std::chrono::nanoseconds sinceEpoch = date.time_since_epoch();
        return appendContent(std::int64_t{sinceEpoch.count()}, depth);
    }
    bool appendContent(const std::string& text, int) {
        appendLength(m_bytes, text.size());
        m_bytes += text;
        return true;
    }
    bool appendContent(const Data& data, int depth) { return appendContent(data.raw(), depth); }
    bool appendContent(const URL& url, int depth) { return appendContent(url.absoluteString(), depth); }
    bool appendContent(const PropertyValue::Array& array, int depth) {
        appendLength(m_bytes, array.size());
        for (const PropertyValue& element : array) {
            if (!append(element, depth + 1)) return false;
        }
        return true;
    }
    bool appendContent(const PropertyValue::Dictionary& dictionary, int depth) {
        appendLength(m_bytes, dictionary.size());
        for (const auto& [key, element] : dictionary) {
            appendContent(key, depth);
            if (!append(element, depth + 1)) return false;
        }
        return true;
    }

    std::string m_bytes;
};

std::optional<std::size_t> takeLength(std::string_view& bytes) {
    std::size_t length = 0;
    for (unsigned shift = 0; shift < 35 && !bytes.empty(); shift += 7) {
        const auto group = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        length |= std::size_t{group & 0x7FU} << shift;
        if (group < 0x80) return group != 0 || shift == 0 ? std::optional(length) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<PropertyValue> take(std::string_view& bytes, int depth);

template <FixedWidth T>
std::optional<T> takeNumber(std::string_view& bytes) {
    if (bytes.size() < sizeof(T)) return std::nullopt;
    T number;
    std::memcpy(&number, bytes.data(), sizeof number);
    bytes.remove_prefix(sizeof number);
    return number;
}

std::optional<PropertyValue> takeBoolean(std::string_view& bytes) {
    const auto byte = takeNumber<std::uint8_t>(bytes);
    if (!byte || *byte > 1) return std::nullopt;
    return PropertyValue(*byte == 1);
}

std::optional<PropertyValue> takeDate(std::string_view& bytes) {
    const auto count = takeNumber<std::int64_t>(bytes);
    if (!count) return std::nullopt;
    using Duration = PropertyValue::Date::duration;
    return PropertyValue::Date(std::chrono::duration_cast<Duration>(std::chrono::nanoseconds(*count)));
}

std::optional<PropertyValue> takeURL(std::string_view& bytes) {
    const auto text = takeText(bytes);
    return text ? std::optional<PropertyValue>(URL::parse(*text)) : std::nullopt;
}

std::optional<PropertyValue> takeArray(std::string_view& bytes, int depth) {
    const auto count = takeLength(bytes);
    if (!count || *count > bytes.size()) return std::nullopt;  // an element takes a byte at least
    PropertyValue::Array array;
    for (std::size_t i = 0; i < *count; ++i) {
        auto element = take(bytes, depth + 1);
        if (!element) return std::nullopt;
        array.push_back(std::move(*element));
    }
    return array;
}

std::optional<PropertyValue> takeDictionary(std::string_view& bytes, int depth) {
    const auto count = takeLength(bytes);
    if (!count || *count > bytes.size()) return std::nullopt;
    PropertyValue::Dictionary dictionary;
    for (std::size_t i = 0; i < *count; ++i) {
        const auto key = takeText(bytes);
        if (!key || (i > 0 && *key <= dictionary.rbegin()->first)) return std::nullopt;
        auto element = take(bytes, depth + 1);
        if (!element) return std::nullopt;
        dictionary.emplace_hint(dictionary.end(), *key, std::move(*element));
    }
    return dictionary;
}

std::optional<PropertyValue> take(std::string_view& bytes, int depth) {
    if (bytes.empty() || depth > deepest) return std::nullopt;
    const char kind = bytes.front();
    bytes.remove_prefix(1);
    switch (kind) {
        case 0:
            return takeBoolean(bytes);
        case 1:
            return takeNumber<std::int64_t>(bytes);
        case 2:
            return takeNumber<float>(bytes);
        case 3:
            return takeNumber<double>(bytes);
        case 4:
            return takeText(bytes);
        case 5: {
            const auto data = takeText(bytes);
            return data ? std::optional<PropertyValue>(Data(*data)) : std::nullopt;
        }
        case 6:
            return takeDate(bytes);
        case 7:
            return takeURL(bytes);
        case 8:
            return takeArray(bytes, depth);
        case 9:
            return takeDictionary(bytes, depth);
        default:
            return std::nullopt;
    }
}

}  // namespace

void appendLength(std::string& bytes, std::size_t length) {
    for (; length >= 0x80; length >>= 7) bytes += static_cast<char>(length | 0x80);
    bytes += static_cast<char>(length);
}

std::optional<std::string_view> takeText(std::string_view& bytes) {
    const auto length = takeLength(bytes);
    if (!length || *length > bytes.size()) return std::nullopt;
    const std::string_view text = bytes.substr(0, *length);
    bytes.remove_prefix(*length);
    return text;
}

std::optional<std::string> encodeProperty(const PropertyValue& value) {
    Encoder encoder;
    if (!encoder.append(value, 1)) return std::nullopt;
    return encoder.take();
}

std::optional<PropertyValue> decodeProperty(std::string_view bytes) {
    if (bytes.size() > largest) return std::nullopt;
    std::optional<PropertyValue> value = take(bytes, 1);
    return bytes.empty() ? std::move(value) : std::nullopt;
}

}  // namespace torvel
