#include "TorvelPlatform/foundation/PropertyList.h"

#include "TorvelPlatform/foundation/OldStylePropertyList.h"
#include "TorvelPlatform/foundation/PropertyListForms.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>

#include <locale.h>
#include <plist/plist.h>
#include <unicode/ustring.h>

namespace torvel {
namespace {

struct Freed {
    void operator()(void* memory) const { std::free(memory); }
};
struct PlistFreed {
    void operator()(void* plist) const { plist_free(plist); }
};
template <class T>
using Allocated = std::unique_ptr<T, Freed>;
using Plist = std::unique_ptr<void, PlistFreed>;

constexpr std::string_view binaryMagic = "bplist00";

// libplist reads reals by the thread's locale, which may have a decimal comma.
class NumbersInC {
  public:
    NumbersInC() { m_previous = uselocale(plain()); }
    ~NumbersInC() { uselocale(m_previous); }
    NumbersInC(const NumbersInC&) = delete;
    NumbersInC& operator=(const NumbersInC&) = delete;

  private:
    static locale_t plain() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }
    locale_t m_previous;
};

std::optional<PropertyList> converted(plist_t node);

std::optional<PropertyList> convertedString(plist_t node) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const Allocated<char> owner(text);
    if (text == nullptr || !isValidUTF8(text)) return std::nullopt;
    return PropertyList(std::string(text));
}

std::optional<PropertyList> convertedData(plist_t node) {
    std::uint64_t size = 0;
    const char* bytes = plist_get_data_ptr(node, &size);
    return PropertyList(Data(bytes == nullptr ? std::string() : std::string(bytes, size)));
}

// libplist's getter ends in 2069, its writer does not.
std::optional<PropertyList> convertedFarDate(plist_t node) {
    char* xml = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(node, &xml, &size);
    const Allocated<char> owner(xml);
    const std::string_view text(xml, xml == nullptr ? 0 : size);
    const std::size_t element = text.find("<date>");
    if (element == std::string_view::npos) return std::nullopt;
    const auto date = propertyListDate(text.substr(element + 6, 20));
    return date ? std::optional<PropertyList>(*date) : std::nullopt;
}

std::optional<PropertyList> convertedDate(plist_t node) {
    std::int32_t seconds = 0, microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    using Limits = std::numeric_limits<std::int32_t>;
    if (seconds == Limits::min() || seconds == Limits::max()) return convertedFarDate(node);
    constexpr auto reference = std::chrono::sys_days(std::chrono::year{2001} / 1 / 1);
    return PropertyList(PropertyList::Date(reference + std::chrono::seconds(seconds) +
                                           std::chrono::microseconds(microseconds)));
}

std::optional<PropertyList> convertedArray(plist_t node) {
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const Allocated<void> owner(iterator);
    PropertyList::Array items;
    items.reserve(plist_array_get_size(node));
    plist_t item = nullptr;
    for (plist_array_next_item(node, iterator, &item); item != nullptr;
         plist_array_next_item(node, iterator, &item)) {
        std::optional<PropertyList> value = converted(item);
        if (!value) return std::nullopt;
        items.push_back(std::move(*value));
    }
    return PropertyList(std::move(items));
}

std::optional<PropertyList> convertedDictionary(plist_t node) {
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const Allocated<void> owner(iterator);
    PropertyList::Dictionary members;
    while (true) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const Allocated<char> keyOwner(key);
        if (item == nullptr) return PropertyList(std::move(members));
        std::optional<PropertyList> value = converted(item);
        if (!value || key == nullptr || !isValidUTF8(key)) return std::nullopt;
        members.insert_or_assign(key, std::move(*value));
    }
}

template <class Native, class Value>
PropertyList convertedNumber(plist_t node, void (*get)(plist_t, Native*)) {
    Native native{};
    get(node, &native);
    return PropertyList(static_cast<Value>(native));
}

std::optional<PropertyList> converted(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_STRING:
            return convertedString(node);
        case PLIST_UINT:
            return convertedNumber<std::uint64_t, std::int64_t>(node, plist_get_uint_val);
        case PLIST_UID:
            return convertedNumber<std::uint64_t, std::int64_t>(node, plist_get_uid_val);
        case PLIST_REAL:
            return convertedNumber<double, double>(node, plist_get_real_val);
        case PLIST_BOOLEAN:
            return convertedNumber<std::uint8_t, bool>(node, plist_get_bool_val);
        case PLIST_DATA:
            return convertedData(node);
        case PLIST_DATE:
            return convertedDate(node);
        case PLIST_ARRAY:
            return convertedArray(node);
        case PLIST_DICT:
            return convertedDictionary(node);
        default:
            return std::nullopt;
    }
}

using Reader = void (*)(const char*, std::uint32_t, plist_t*);

Outcome<PropertyList, PropertyListError> readBy(Reader reader, std::string_view bytes) {
    plist_t node = nullptr;
    const NumbersInC numbers;
    reader(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    const Plist owner(node);
    if (node == nullptr) return PropertyListError{"offset 0: libplist cannot read the property list"};
    std::optional<PropertyList> list = converted(node);
    if (!list) return PropertyListError{"offset 0: the property list holds a text that is not valid UTF-8"};
    return std::move(*list);
}

std::optional<std::string> utf8FromUTF16(std::string_view bytes, bool bigEndian) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    std::u16string units;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const auto high = static_cast<unsigned char>(bytes[i + (bigEndian ? 0 : 1)]);
        const auto low = static_cast<unsigned char>(bytes[i + (bigEndian ? 1 : 0)]);
        units += static_cast<char16_t>(high << 8 | low);
    }
    std::string text(units.size() * 3, '\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(text.data(), static_cast<std::int32_t>(text.size()), &length, units.data(),
                static_cast<std::int32_t>(units.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// A text form as UTF-8 without its byte order mark. UTF-16 is told by its mark or by the zero byte that one
// of the first two bytes, of an ASCII character, then is.
std::optional<std::string> textOf(std::string_view bytes) {
    const auto startsWith = [bytes](std::string_view mark) { return bytes.starts_with(mark); };
    if (startsWith("\xFE\xFF")) return utf8FromUTF16(bytes.substr(2), true);
    if (startsWith("\xFF\xFE")) return utf8FromUTF16(bytes.substr(2), false);
    if (bytes.size() >= 2 && bytes[0] == 0) return utf8FromUTF16(bytes, true);
    if (bytes.size() >= 2 && bytes[1] == 0) return utf8FromUTF16(bytes, false);
    if (startsWith("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    if (!isValidUTF8(bytes)) return std::nullopt;
    return std::string(bytes);
}

// XML 1.0 (2.11) has CR LF read as LF; the old form's readers do the same.
void joinLineEnds(std::string& text) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' || text[i + 1] != '\n') text[kept++] = text[i];
    }
    text.resize(kept);
}

Outcome<PropertyList, PropertyListError> parseText(std::string text, std::vector<PropertyListKey>* rootKeys) {
    joinLineEnds(text);
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos || text[first] != '<') return parseOldStylePropertyList(text, rootKeys);
    const auto plain = plainXMLPropertyList(text, rootKeys);
    if (!plain) return plain.error();
    return readBy(plist_from_xml, plain.value());
}

}  // namespace

PropertyListError faultAtLine(std::string_view text, std::size_t position, const std::string& message) {
    const std::string_view before = text.substr(0, position);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    return {"line " + std::to_string(line) + ": " + message};
}

void RootKeys::note(const std::string& key, std::size_t position) {
    if (m_keys == nullptr) return;
    const std::string_view since = m_text.substr(m_counted, position - m_counted);
    m_line += static_cast<int>(std::count(since.begin(), since.end(), '\n'));
    m_counted = position;
    m_keys->push_back({key, m_line});
}

std::optional<PropertyList::Date> propertyListDate(std::string_view text) {
    using namespace std::chrono;
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    if (text.size() != form.size()) return std::nullopt;
    int numbers[6] = {};  // year, month, day, hour, minute, second
    for (std::size_t i = 0, field = 0; i < form.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (form[i] == '0' ? !digit : text[i] != form[i]) return std::nullopt;
        if (digit) numbers[field] = numbers[field] * 10 + (text[i] - '0');
        field += digit ? 0 : 1;
    }
    const auto& [y, m, d, hour, minute, second] = numbers;
    const year_month_day day(year{y}, month{static_cast<unsigned>(m)},
                             std::chrono::day{static_cast<unsigned>(d)});
    if (!day.ok() || y < 1678 || y > 2261 || hour > 23 || minute > 59 || second > 60) return std::nullopt;
    return sys_days(day) + hours(hour) + minutes(minute) + seconds(second);
}

PropertyList::PropertyList(const PropertyList&) = default;
PropertyList::PropertyList(PropertyList&&) noexcept = default;
PropertyList& PropertyList::operator=(const PropertyList&) = default;
PropertyList& PropertyList::operator=(PropertyList&&) noexcept = default;
PropertyList::~PropertyList() = default;

Outcome<PropertyList, PropertyListError> PropertyList::parse(const Data& bytes,
                                                             std::vector<PropertyListKey>* rootKeys) {
    const std::string_view raw = bytes.raw();
    if (raw.empty()) return PropertyListError{"offset 0: the property list is empty"};
    if (raw.size() > std::numeric_limits<std::int32_t>::max() / 2) {
        return PropertyListError{"offset 0: the property list is too large"};
    }
    if (raw.starts_with(binaryMagic)) {
        if (auto fault = faultInBinaryPropertyList(raw)) return std::move(*fault);
        return readBy(plist_from_bin, raw);
    }
    std::optional<std::string> text = textOf(raw);
    if (!text) return PropertyListError{"offset 0: the property list is neither valid UTF-8 nor UTF-16"};
    return parseText(std::move(*text), rootKeys);
}

}  // namespace torvel
