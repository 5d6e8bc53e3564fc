#include "TorvelPlatform/uikit/UIColor.h"

#include "TorvelPlatform/foundation/CharacterSet.h"

#include <charconv>
#include <cstdint>
#include <limits>

namespace torvel {
namespace {

// The number that the platform's scanner reads at the start of a text: white space before it is skipped, then
// "0x"; no digits are 0, too many the greatest number.
std::uint32_t scanHexInt(std::string_view text) {
    text = CharacterSet::whitespacesAndNewlines().trimming(text);
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::uint32_t>::max() : value;
}

}  // namespace

UIColor UIColor::patternImage(std::shared_ptr<const UIImage> image) {
    UIColor color(0, 0, 0, 0);
    color.m_pattern = std::move(image);
    color.m_isPattern = true;
    return color;
}

UIColor UIColor::hexString(std::string_view text) {
    text = CharacterSet::whitespacesAndNewlines().trimming(text);
    if (text.starts_with('#')) text.remove_prefix(1);
    const std::uint32_t value = scanHexInt(text);
    const auto component = [value](int shift) { return ((value >> shift) & 0xFF) / 255.0; };
    return {component(16), component(8), component(0)};
}

std::optional<UIColor::Components> UIColor::components() const {
    return m_isPattern ? std::nullopt : std::optional(m_components);
}

UIColor UIColor::withAlphaComponent(double alpha) const {
    UIColor color = *this;
    color.m_components.alpha = alpha;
    return color;
}

bool UIColor::operator==(const UIColor& other) const {
    return !m_isPattern && !other.m_isPattern && m_components == other.m_components;
}

}  // namespace torvel
